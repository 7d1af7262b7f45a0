#pragma once

#include <new>
#include <utility>

namespace platform {

/// A value that is never destroyed, for process-wide state: objects that die late (static ones, in
/// whatever order) may still use it.
template <typename Value>
class NoDestructor {
public:
    template <typename... Args>
    explicit NoDestructor(Args&&... args)
    {
        ::new (static_cast<void*>(storage_)) Value(std::forward<Args>(args)...);
    }
    NoDestructor(const NoDestructor&) = delete;
    NoDestructor& operator=(const NoDestructor&) = delete;

    Value& operator*() { return *std::launder(reinterpret_cast<Value*>(storage_)); }
    Value* operator->() { return &**this; }

private:
    alignas(Value) unsigned char storage_[sizeof(Value)];
};

}  // namespace platform
