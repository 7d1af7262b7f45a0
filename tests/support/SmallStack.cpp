#include "support/SmallStack.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstddef>

namespace support {

namespace {

constexpr std::size_t stackBytes = 256 * 1024;

void* call(void* work)
{
    (*static_cast<const std::function<void()>*>(work))();
    return nullptr;
}

}  // namespace

void onSmallStack(const std::function<void()>& work)
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, stackBytes), 0);
    pthread_t thread{};
    // The function outlives the thread, which is joined below.
    ASSERT_EQ(pthread_create(&thread, &attributes, call, const_cast<std::function<void()>*>(&work)), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

}  // namespace support
