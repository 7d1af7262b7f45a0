#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "hwdef/inspect/BomText.h"
#include "hwdef/inspect/FindingList.h"
#include "platform/KeyedHash.h"
#include "platform/iostreams/ArchiveReader.h"

/// What a BOM document says of the members beside it.
struct BomListing {
    struct Digest {
        std::string text;
        std::uint64_t line = 0;
    };

    /// Of all members that an entry stands for, with the first line that lists them.
    std::unordered_map<std::string, std::uint64_t, platform::KeyedHash> names;
    std::vector<std::string> sources;  ///< directories whose files are driver sources, with "/" at the end
    std::unordered_map<std::string, Digest, platform::KeyedHash> digests;  ///< recorded, by name
    /// The names whose digests count, in byte order, and whether each is a driver's file.
    std::map<std::string, bool> digested;
    std::string minor;
    std::string overallDigest;
};

/// Looks through a BOM document that parses, the member `bom` of the archive, and tells what is wrong
/// with it and with what it refers to.
class BomFindings {
public:
    BomFindings(BomText& document, const std::string& bom, const iostreams::zip::ArchiveReader& archive,
                FindingList& findings)
        : document_(document), bom_(bom), archive_(archive), findings_(findings)
    {
    }

    /// The most memory that a look at the document takes beside it.
    static std::uint64_t mostBytes(const BomText& document);

    /// False when nothing of the document counts, because of its version.
    bool look(BomListing& listing);

private:
    using Element = HXMLWElement;
    struct Driver {
        std::uint64_t line = 0;
        bool hasDescription = false;
    };

    void add(const Element& element, const char* id, const std::string& text);
    bool checkVersions(const Element& root);
    void checkChild(const Element& child, BomListing& listing);
    void checkFile(const Element& file, BomListing& listing);
    void list(const Element& file, BomListing& listing, const std::string& fullName, const std::string& name);
    void checkVocabulary(const Element& file, const std::string& name);
    void checkDrivers(const Element& drivers, BomListing& listing);
    void checkDriverFile(const Element& file, BomListing& listing, Driver& driver);
    void checkPart(const Element& part);

    BomText& document_;
    const std::string& bom_;
    const iostreams::zip::ArchiveReader& archive_;
    FindingList& findings_;
    std::map<std::string, Driver, std::less<>> drivers_;
};

/// Tells which references between partitions, modules, configurations and files lead nowhere.
void findPartitionFaults(BomText& document, const std::string& bom, const BomListing& listing,
                         FindingList& findings);
