#include "Container.h"
#include "Text.h"
#include "Verb.h"

namespace {

class List : public Verb {
public:
    List()
        : Verb(20, {"list",
                    "List the files of a container",
                    "Lists the files of a container's bill of materials in its order.",
                    {{"hwdef list design.hdf", "every file with its type"},
                     {"hwdef list --type BIT design.hdf", "the bitstreams"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        arguments.operand("FILE", Kind::CONTAINER, file_, "The container");
        arguments.option("-t,--type", "TYPE", Kind::TYPE, type_, "Only files of this type");
    }

    ExitCode run(Output& output) override;

private:
    std::string file_;
    std::string type_;
};

const Registration<List> registration;

void writeJson(Json& json, const HHDFHwDefFile& file)
{
    json.beginObject();
    json.add("name", file.getFileName());
    json.add("type", HHDFHwDefFileTypes::getHWHFileTypeStr(file.getFileType()));
    json.end();
}

ExitCode List::run(Output& output)
{
    const auto type = type_.empty() ? HHDFHwDefFileTypes::UNKNOWN : typeOf(type_);
    const auto definition = openContainer(file_);
    std::vector<HHDFHwDefFile*> files;
    definition->getBomFiles(files);
    if (!type_.empty()) {
        std::erase_if(files, [&](const HHDFHwDefFile* file) { return file->getFileType() != type; });
    }
    if (output.isJson()) {
        output.json().add("file", file_);
        output.json().beginArray("files");
        for (const HHDFHwDefFile* file : files) {
            writeJson(output.json(), *file);
        }
        output.json().end();
        return ExitCode::SOUND;
    }
    Table table("ll");
    for (const HHDFHwDefFile* file : files) {
        table.row({HHDFHwDefFileTypes::getHWHFileTypeStr(file->getFileType()), printable(file->getFileName())});
    }
    output.lines(table.lines());
    return ExitCode::SOUND;
}

}  // namespace
