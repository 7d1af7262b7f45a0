// The BOM reader alone: any text as the document.

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <stdexcept>

#include "fuzz/FuzzInput.h"
#include "hwdef/hwdef.h"
#include "platform/HXMLWInterface.h"

namespace {

/// The description of a board has readers of its own.
void readBoard(HHDFHwDef& def, HXMLWElement* root)
{
    HHDFHwDefBomReader(&def, root).populateBoardInfo(root);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool quiet = (fuzz::dropMessages(), true);
    static_cast<void>(quiet);
    HXMLWInterface document;
    if (!document.readFromBuffer(std::string(fuzz::view(data, size)))) {
        fuzz::require(!document.error().text.empty(), "a document that doesn't parse says why");
        return 0;
    }
    HHDFHwDef def(fuzz::directory() + "/none.hdf");
    try {
        HHDFHwDefBomReader(&def, document.getRootElement()).readHDF("");
    } catch (const boost::bad_lexical_cast&) {  // a number of dies that is none
    } catch (const std::invalid_argument&) {    // a version that is no number
    } catch (const std::out_of_range&) {        // one too large
    }
    readBoard(def, document.getRootElement());
    return 0;
}
