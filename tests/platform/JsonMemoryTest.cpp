#include "platform/JsonMemory.h"

#include <gtest/gtest.h>

#include <cstring>

using platform::JsonMemory;

TEST(JsonMemory, keepsTheContentOfABlockThatGrows)
{
    JsonMemory memory;
    void* block = memory.Malloc(4);
    std::memcpy(block, "abcd", 4);
    block = memory.Realloc(block, 4, 1000);

    EXPECT_EQ(std::memcmp(block, "abcd", 4), 0);
    JsonMemory::Free(block);
}

TEST(JsonMemory, givesNoBlockOfNoBytes)
{
    JsonMemory memory;

    EXPECT_EQ(memory.Malloc(0), nullptr);
    EXPECT_EQ(memory.Realloc(memory.Malloc(8), 8, 0), nullptr);  // and frees the old one
}
