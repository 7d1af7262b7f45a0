#include "Edit.h"

#include "CommandError.h"
#include "Messages.h"
#include "ProgressLine.h"
#include "Text.h"
#include "platform/HUTFile.h"
#include "platform/HUTZip.h"

namespace {

void checkBom(const Recipe& recipe, const Container& container)
{
    if (!tellsAll(recipe, container)) {
        throw CommandError(
            printable(container.path) + ": \"" + container.bomName() +
            "\" is of other hands, and may say what an edit would lose; --rewrite-bom writes it anew "
            "with all that hwdef knows of it");
    }
}

}  // namespace

void defineLeave(Arguments& arguments, EditLeave& leave)
{
    arguments.flag("--rewrite-bom", leave.toRewriteBom,
                   "Write a bill of materials of other hands anew, with what hwdef knows of it");
    arguments.flag("--force", leave.toBless, "Edit an archive whose digest is wrong");
}

void checkDigest(const Container& container, const std::string& leave)
{
    if (container.archive->hasDigest() && HUTZip::checkIntegrity(HUTFile(container.path)) != HUTZip::INTACT) {
        OwnWork::endIfAsked();
        throw CommandError(printable(container.path) +
                           ": the archive was changed after it was written: its digest is wrong; " + leave);
    }
}

void editContainer(const std::string& path, const EditLeave& leave,
                   const std::function<void(Recipe&)>& change)
{
    const Container container = openContainer(path);
    Recipe recipe = recipeOf(container);
    if (!leave.toBless) {
        checkDigest(container, "--force edits it all the same, and records a new digest");
    }
    if (!leave.toRewriteBom) {
        checkBom(recipe, container);
    }
    change(recipe);
    if (const std::uint64_t behind = container.archive->bytesBehind(); behind > 0) {
        tell(printable(path) + ": " + counted(behind, "byte") + " behind the archive are not kept");
    }
    cook(recipe, path, container.archive.get());
}
