// The shortest producer: usage: first_producer CONTAINER FILE.hwh FILE.bit
#include <hwdef/hwdef.h>

#include <iostream>

int main(int argc, char** argv)
{
    if (argc != 4) {
        return 2;
    }
    const auto definition = HHDFHwDefUtils::createHDF(argv[1]);
    definition->setMinorVersion(3);  // guarded by the archive's digest
    definition->setPart("ice40hx8k-ct256");
    definition->addFileToBom(argv[2], HHDFHwDefFileTypes::HW_HANDOFF);
    definition->addFileToBom(argv[3], HHDFHwDefFileTypes::BIT);
    if (!definition->write(true)) {
        return 1;  // the reason was sent as a message
    }
    std::cout << "wrote " << argv[1] << "\n";
}
