// The shortest consumer: usage: first_consumer CONTAINER MEMBER DESTINATION
#include <hwdef/hwdef.h>

#include <iostream>

int main(int argc, char** argv)
try {
    const auto definition = argc == 4 ? HHDFHwDefUtils::getHDF(argv[1], /*checkIntegrity=*/true) : nullptr;
    if (definition == nullptr) {
        return 1;  // the reason was sent as a message, but of a BOM that isn't XML
    }
    std::vector<std::string> names;
    definition->getBomFiles(names);
    std::cout << definition->getPart() << ":\n";
    for (const std::string& name : names) {
        std::cout << "  " << name << "\n";
    }
    return HHDFHwDefUtils::writeFileFromHDF(argv[3], argv[2], argv[1]) ? 0 : 1;
} catch (const std::exception&) {
    return 1;  // a number in the BOM is none
}
