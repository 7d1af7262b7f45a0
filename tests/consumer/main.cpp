// What a stranger's program does with the installed library: usage: consumer DIRECTORY VERSION
#include <hwdef/hwdef.h>
#include <platform/platform.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

bool check(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "failed: %s\n", what);
    }
    return condition;
}

/// Writes a container and reads it back.
bool roundTrip(const std::string& directory)
{
    const std::string container = directory + "/consumer.hdf";
    const std::string file = directory + "/design.hwh";
    HUTFileWriteStream(file) << "handoff";
    auto written = HHDFHwDefUtils::createHDF(container);
    written->setPart("ice40hx8k-ct256");
    written->addFileToBom(file, HHDFHwDefFileTypes::HW_HANDOFF);
    if (!check(written->write(true), "writing a container")) {
        return false;
    }
    const auto read = HHDFHwDefUtils::getHDF(container, true);
    return check(read != nullptr && read->getPart() == "ice40hx8k-ct256", "reading it back") &&
           check(HHDFHwDefUtils::getFileBufferFromHDF("design.hwh", container) == "handoff",
                 "reading a member");
}

/// Messages reach the program, and exceptions of the library are caught by their class.
bool failures(const std::string& directory)
{
    std::vector<std::string> ids;
    ComMsgMgr::setHandler([&](const ComMsg& message) { ids.push_back(message.id); });
    const auto missing = HHDFHwDefUtils::getHDF(directory + "/missing.hdf");
    ComMsgMgr::setHandler({});
    bool caught = false;
    try {
        HUTZip::compress(HUTFile(directory + "/archive.zip"), directory + "/missing.txt",
                         HUTZip::ZIP_DEFAULT);
    } catch (const iostreams::device::detail::zip_exception&) {
        caught = true;
    }
    return check(missing == nullptr && ids == std::vector<std::string>{"@64-5@%s"}, "a message") &&
           check(caught, "catching an exception");
}

}  // namespace

int main(int argc, char** argv)
{
    const bool good = check(argc == 3, "usage: consumer DIRECTORY VERSION") && roundTrip(argv[1]) &&
                      failures(argv[1]) && check(HUTEnv::getProductVersion() == argv[2], "the version");
    return good ? 0 : 1;
}
