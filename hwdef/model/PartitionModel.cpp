#include <iostream>

#include "hwdef/model/HHDFHwDefImp.h"

namespace {

void printPartition(const std::string& path, const HHDFHwDefPartitionInfo& info)
{
    std::cout << "partitionPath: " << path << std::endl;
    for (const auto& [rmName, files] : info.getRmToFilesMap()) {
        std::cout << "!!RM Name: " << rmName << std::endl;
        for (const std::string& file : files) {
            std::cout << "!!!!FILE: " << file << std::endl;
        }
    }
    std::cout << "!!default rm: " << info.getDefaultRmName() << std::endl;
}

/// The value of a key in a map of owned objects, made by `make` when the key is new. Nothing leaks
/// and no null stays in the map when either allocation fails.
template <typename Owned, typename Make>
std::pair<Owned*, bool> findOrMake(std::map<std::string, Owned*>& map, const std::string& key, Make make)
{
    if (const auto found = map.find(key); found != map.end()) {
        return {found->second, false};
    }
    std::unique_ptr<Owned> made = make();
    map.emplace(key, made.get());
    return {made.release(), true};
}

}  // namespace

bool HHDFHwDefImp::addPartitionInfo(std::string& partitionPath, std::string& rmName, std::string& file,
                                    bool isDefault)
{
    const auto [info, isNew] = findOrMake(partitionInfo, partitionPath, [&] {
        return std::make_unique<HHDFHwDefPartitionInfo>(rmName, file, isDefault);
    });
    return isNew || info->addPartitionInfo(rmName, file, isDefault);
}

HHDFHwDefConfig& HHDFHwDefImp::configNamed(const std::string& name, bool isActive)
{
    return *findOrMake(partitionConfigs, name, [&] {
                return std::make_unique<HHDFHwDefConfig>(name, isActive);
            }).first;
}

void HHDFHwDefImp::addPartitionCell(HHDFHwDefConfig& config, const std::string& instPath,
                                    const std::string& rmName, const std::string& file)
{
    if (rmName.empty()) {
        config.addGrayBoxCell(instPath);
    } else {
        config.addPartitionCellRM(instPath, rmName, file, HHDFHwDefFileTypes::BIT);
    }
}

void HHDFHwDefImp::printPartitionInfo() const
{
    for (const auto& [path, info] : partitionInfo) {
        printPartition(path, *info);
    }
    std::cout << "--------- CONFIGURATIONS ---------------" << std::endl;
    for (const auto& [name, config] : partitionConfigs) {
        if (config) {
            config->print();
        }
    }
    std::cout << "----------------------------------------" << std::endl;
}

bool HHDFHwDef::addPartitionInfo(std::string& partitionPath, std::string& rmName, std::string& file,
                                 bool isDefault)
{
    return implementation_->addPartitionInfo(partitionPath, rmName, file, isDefault);
}

void HHDFHwDef::addPartitionCell(const std::string& configName, const std::string& instPath,
                                 const std::string& rmName, const std::string& file, bool isActive)
{
    HHDFHwDefConfig& config = implementation_->configNamed(configName, isActive);
    HHDFHwDefImp::addPartitionCell(config, instPath, rmName, file);
}

const std::map<std::string, HHDFHwDefPartitionInfo*>& HHDFHwDef::getPartitionInfo() const
{
    return implementation_->partitionInfo;
}

const std::map<std::string, HHDFHwDefConfig*>& HHDFHwDef::getPartitionConfigs() const
{
    return implementation_->partitionConfigs;
}

void HHDFHwDef::printPartitionInfo() const
{
    implementation_->printPartitionInfo();
}
