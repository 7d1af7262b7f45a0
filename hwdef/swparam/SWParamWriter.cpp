#include "hwdef/swparam/SWParamWriter.h"

#include <rapidjson/document.h>
#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/prettywriter.h>

#include "platform/HCRapidJsonReadWriteUtils.h"
#include "platform/HUTFile.h"
#include "platform/HUTFileWriteStream.h"

bool SWParamWriter::writeParamInfo(const std::string& path, std::string refName, const std::string& key,
                                   const std::string& value)
{
    std::string canonicalPath;
    HUTFile(path).getCanonicalName(canonicalPath);
    HUTFileWriteStream out(canonicalPath);

    rapidjson::Document document(rapidjson::kObjectType);
    HCRapidJsonReadWriteUtils::AddStringProperty(document, "refName", refName, document.GetAllocator());
    HCRapidJsonReadWriteUtils::AddStringProperty(document, key, value, document.GetAllocator());

    rapidjson::OStreamWrapper stream(out);
    rapidjson::PrettyWriter<rapidjson::OStreamWrapper> writer(stream);
    document.Accept(writer);
    out.close();
    return true;
}
