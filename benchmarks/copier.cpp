// Copies all members of an archive as they are compressed into a new one: bench_copier FROM TO.
// The zip layer is no part of the library's interface, so this program holds a copy of it.

#include <iostream>

#include "platform/iostreams/ArchiveReader.h"
#include "platform/iostreams/ArchiveWriter.h"

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: bench_copier FROM TO\n";
        return EXIT_FAILURE;
    }
    try {
        const iostreams::zip::ArchiveReader from(argv[1]);
        iostreams::zip::ArchiveWriter to(argv[2]);
        std::string reason;
        for (const iostreams::zip::Entry& entry : from.entries()) {
            if (!to.addMember(from, entry, std::string(entry.name), reason)) {
                throw HEXAll(reason);
            }
        }
        to.commit();
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return EXIT_FAILURE;
    }
}
