#include <stdexcept>

#include "CommandError.h"
#include "Container.h"
#include "Text.h"
#include "Verb.h"

namespace {

class Params : public ContainerVerb {
public:
    Params()
        : ContainerVerb(
              70,
              {"params",
               "Show software parameters",
               "Shows the software parameters in the first file of a type, which must stand on the archive's "
               "top level.",
               {{"hwdef params design.hdf PS_CONFIG", "the parameters of the processing system"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        ContainerVerb::define(arguments);
        arguments.operand("TYPE", Kind::TYPE, type_, "The type of the file");
    }

    ExitCode run(Output& output) override;

private:
    std::string type_;
};

const Registration<Params> registration;

std::vector<std::string> typesIn(const Container& container)
{
    std::vector<std::string> tokens;
    for (const HHDFHwDefFile* file : container.files()) {
        tokens.push_back(typeToken(*file));
    }
    return tokens;
}

bool readParameters(const std::string& token, const std::string& file, std::string& refName,
                    HHDFHwDefUtils::Attributes& attributes)
{
    try {
        return HHDFHwDefUtils::getSWParamInfo(token, file, refName, attributes);
    } catch (const std::out_of_range&) {
        throw CommandError(printable(file) + ": a processing-system IO setting is cut off");
    }
}

ExitCode Params::run(Output& output)
{
    const std::string token = HHDFHwDefFileTypes::getHWHFileTypeStr(typeOf(type_));
    const Container container = openContainer(containerPath());
    std::string refName;
    HHDFHwDefUtils::Attributes attributes;
    if (!readParameters(token, containerPath(), refName, attributes)) {
        throw CommandError(printable(containerPath()) + ": there is no file of the type " + token +
                           didYouMean(token, typesIn(container)));
    }
    if (refName.empty() && attributes.empty()) {
        throw CommandError(printable(containerPath()) + ": the first file of the type " + token +
                           " holds no software parameters");
    }
    if (output.isJson()) {
        output.json().add("file", containerPath());
        output.json().add("type", token);
        output.json().add("refName", refName);
        output.json().beginObject("parameters");
        for (const auto& [name, value] : attributes) {
            output.json().add(name, value);
        }
        output.json().end();
        return ExitCode::SOUND;
    }
    output.line(output.paint(Style::BOLD, printable(refName)));
    Table table("ll");
    for (const auto& [name, value] : attributes) {
        table.row({printable(name), printable(value)});
    }
    output.lines(table.lines(2));
    return ExitCode::SOUND;
}

}  // namespace
