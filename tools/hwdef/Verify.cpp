#include "CommandError.h"
#include "Container.h"
#include "Embedded.h"
#include "FindingText.h"
#include "Messages.h"
#include "ProgressLine.h"
#include "Text.h"
#include "Verb.h"

namespace {

class Verify : public Verb {
public:
    Verify()
        : Verb(
              80,
              {"verify",
               "Find everything that is wrong with containers",
               "Tells every finding in one run: what is wrong with the archive, its bill of materials, its "
               "members, drivers and partitions, where, and what to do about it. Each has an identifier that "
               "stays the same from version to version.\n\n"
               "The exit code is 0 when all containers are sound, 1 when there are errors (with --pedantic "
               "also warnings), and 2 when a file can't be read.",
               {{"hwdef verify design.hdf", "read every byte, and tell all findings"},
                {"hwdef verify --level quick *.hdf", "look at the directory and the bill of materials only"},
                {"hwdef verify --json --pedantic design.hdf", "the findings for programs; warnings count"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        arguments.operands("FILE", Kind::CONTAINER, files_, "The containers", true);
        arguments.option("--level", "LEVEL", Kind::TEXT, level_,
                         "How closely to look: quick or full (the default)", {"quick", "full"});
        arguments.flag("--pedantic", isPedantic_, "Count warnings as well");
    }

    ExitCode run(Output& output) override;

private:
    void look(const std::string& file, Output& output);
    void show(const std::string& file, const std::vector<HHDFFinding>& findings, Output& output) const;

    std::vector<std::string> files_;
    std::string level_;
    bool isPedantic_ = false;

    std::vector<std::string> documents_;
    bool isSound_ = true;
    bool isRead_ = true;
};

const Registration<Verify> registration;

Style styleOf(const HHDFFinding& finding)
{
    return finding.severity == HHDFFinding::ERROR     ? Style::RED
           : finding.severity == HHDFFinding::WARNING ? Style::YELLOW
                                                      : Style::CYAN;
}

void Verify::show(const std::string& file, const std::vector<HHDFFinding>& findings, Output& output) const
{
    const FindingCounts counts(findings);
    const bool isSound = counts.errors == 0 && (!isPedantic_ || counts.warnings == 0);
    const std::string verdict =
        isSound ? output.paint(Style::GREEN, "sound") : output.paint(Style::RED, "not sound");
    output.line(output.paint(Style::BOLD, printable(file)) + ": " + verdict + ", " + counts.text());
    for (const HHDFFinding& finding : findings) {
        const std::string place = placeOf(finding);
        output.line("  " + output.paint(styleOf(finding), finding.severityName()) + " " +
                    output.paint(Style::BOLD, finding.id) + (place.empty() ? "" : "  " + place));
        output.line("      " + textOf(finding, file));
        output.line("      " + output.paint(Style::DIM, finding.advice));
    }
}

void Verify::look(const std::string& file, Output& output)
{
    const auto level = level_ == "quick" ? HHDFInspect::Level::QUICK : HHDFInspect::Level::FULL;
    checkFile(file);
    std::vector<HHDFFinding> findings;
    if (!HHDFInspect::verify(file, level, findings)) {
        isRead_ = false;
        return;
    }
    const FindingCounts counts(findings);
    isSound_ = isSound_ && counts.errors == 0 && (!isPedantic_ || counts.warnings == 0);
    if (output.isJson()) {
        documents_.push_back(HHDFInspect::toJson(file, level, findings));
    } else {
        show(file, findings, output);
    }
}

ExitCode Verify::run(Output& output)
{
    for (const std::string& file : files_) {
        try {
            look(file, output);
        } catch (const CommandError& error) {
            tellError(error.what());
            isRead_ = false;
        }
        if (ProgressLine::signal() != 0) {
            break;
        }
    }
    if (output.isJson()) {
        output.json().add("sound", isSound_ && isRead_);
        output.json().addRaw("containers", embeddedArray(documents_));
    }
    return !isRead_ ? ExitCode::ERROR : isSound_ ? ExitCode::SOUND : ExitCode::FINDINGS;
}

}  // namespace
