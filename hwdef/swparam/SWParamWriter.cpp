#include "hwdef/swparam/SWParamWriter.h"

#include <rapidjson/document.h>
#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/prettywriter.h>

#include <vector>

#include "platform/HCRapidJsonReadWriteUtils.h"
#include "platform/HUTFile.h"
#include "platform/HUTFileWriteStream.h"
#include "platform/JsonMemory.h"

namespace {

/// What the pool and an object of two members take beside their texts, several times over.
constexpr std::size_t poolBytes = 8 * 1024;

}  // namespace

bool SWParamWriter::writeParamInfo(const std::string& path, std::string refName, const std::string& key,
                                   const std::string& value)
{
    std::string canonicalPath;
    HUTFile(path).getCanonicalName(canonicalPath);
    HUTFileWriteStream out(canonicalPath);

    // Room for all of the document, since RapidJSON doesn't survive a pool that finds no memory to grow.
    std::vector<char> memory(poolBytes + refName.size() + key.size() + value.size());
    rapidjson::Document::AllocatorType pool(memory.data(), memory.size());
    rapidjson::Document document(rapidjson::kObjectType, &pool);
    HCRapidJsonReadWriteUtils::AddStringProperty(document, "refName", refName, document.GetAllocator());
    HCRapidJsonReadWriteUtils::AddStringProperty(document, key, value, document.GetAllocator());

    rapidjson::OStreamWrapper stream(out);
    using Utf8 = rapidjson::UTF8<>;
    rapidjson::PrettyWriter<rapidjson::OStreamWrapper, Utf8, Utf8, platform::JsonMemory> writer(stream);
    document.Accept(writer);
    out.close();
    return true;
}
