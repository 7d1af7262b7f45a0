#include <filesystem>

#include "CommandError.h"
#include "FindingText.h"
#include "Messages.h"
#include "ReportPage.h"
#include "Text.h"
#include "Verb.h"
#include "WholeFile.h"

namespace {

class Report : public ContainerVerb {
public:
    Report()
        : ContainerVerb(
              110,
              {"report",
               "Write a page that shows a container in pictures",
               "Writes one HTML page with everything in it: properties, resources as bars, a map of the "
               "members by size and type, the partitions as a tree, and all findings. It needs no network, "
               "suits light and dark screens of any width, and is the same for the same container.",
               {{"hwdef report design.hdf -o report.html", "write the page to a file"},
                {"hwdef report design.hdf > report.html", "write it to standard output"}}})
    {
    }

    void define(Arguments& arguments) override
    {
        ContainerVerb::define(arguments);
        arguments.option("-o,--output", "FILE", Kind::FILE, output_,
                         "Where the page goes; standard output without");
    }

    ExitCode run(Output& output) override;

private:
    void checkOutput(const Output& output) const;
    ReportFacts gather() const;

    std::string output_;
};

const Registration<Report> registration;

void Report::checkOutput(const Output& output) const
{
    if (output_.empty() && output.isJson()) {
        throw CommandError("report: with --json the page needs a place of its own: give -o FILE");
    }
    std::error_code error;
    if (!output_.empty() && std::filesystem::equivalent(containerPath(), output_, error)) {
        throw CommandError(printable(output_) + ": the page would replace the container");
    }
}

ReportFacts Report::gather() const
{
    checkFile(containerPath());
    ReportFacts facts;
    facts.path = containerPath();
    if (!HHDFInspect::verify(containerPath(), HHDFInspect::Level::FULL, facts.findings)) {
        throw CommandError(printable(containerPath()) + ": there is nothing to report on");
    }
    // What the library says of a damaged container is among the findings.
    const HeldMessages held;
    try {
        facts.container = openContainer(containerPath());
        facts.contentDigest = HHDFInspect::contentDigest(containerPath());
    } catch (const CommandError& refusal) {
        facts.refusal = refusal.what();
    }
    facts.fileDigest = HHDFInspect::fileDigest(containerPath());
    return facts;
}

ExitCode Report::run(Output& output)
{
    checkOutput(output);
    const ReportFacts facts = gather();
    const std::string page = reportPage(facts);
    if (output_.empty()) {
        output.line(std::string_view(page).substr(0, page.size() - 1));  // the line ends it anew
        return ExitCode::SOUND;
    }
    writeWhole(output_, page);
    const FindingCounts counts(facts.findings);
    if (output.isJson()) {
        output.json().add("file", containerPath());
        output.json().add("report", output_);
        output.json().add("bytes", std::uint64_t{page.size()});
        output.json().add("errors", std::uint64_t{counts.errors});
        output.json().add("warnings", std::uint64_t{counts.warnings});
    } else {
        output.line(printable(output_) + ": " + readableSize(page.size()) + ", " + counts.text());
    }
    return ExitCode::SOUND;
}

}  // namespace
