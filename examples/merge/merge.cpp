// Folds two containers into a third one, which then holds the files and drivers of both.
#include <hwdef/hwdef.h>

#include "support/Expect.h"

int main(int argc, char** argv)
{
    expect(argc == 4, "usage: merge FIRST SECOND MERGED");
    const auto first = HHDFHwDefUtils::getHDF(argv[1]);
    const auto second = HHDFHwDefUtils::getHDF(argv[2]);
    expect(first != nullptr && second != nullptr, "opening the two containers");

    const auto merged = HHDFHwDefUtils::getMrgdHDF({first.get(), second.get()}, argv[3]);
    expect(merged != nullptr && merged->write(true), "writing the merged container");

    const auto read = HHDFHwDefUtils::getHDF(argv[3]);
    expect(read != nullptr, "opening the merged container");
    std::vector<std::string> names;
    std::vector<std::string> firstNames;
    std::vector<std::string> secondNames;
    const std::size_t expected = first->getBomFiles(firstNames) + second->getBomFiles(secondNames);
    expect(read->getBomFiles(names) == expected, "the files of both");
    expect(read->getDriverFilesMap().size() ==
               first->getDriverFilesMap().size() + second->getDriverFilesMap().size(),
           "the drivers of both");
    std::cout << argv[3] << ": " << names.size() << " files, " << read->getDriverFilesMap().size()
              << " drivers\n";
}
