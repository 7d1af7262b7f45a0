#include "platform/Progress.h"

#include <string>
#include <utility>

#include "platform/ProgressWork.h"

namespace platform {

thread_local ProgressWatch* ProgressWatch::innermost_ = nullptr;
constinit thread_local ProgressWork* ProgressWork::current_ = nullptr;

namespace {

/// Gives a variable another value for a while.
template <typename Value>
class Exchanged {
public:
    Exchanged(Value& variable, Value value) : variable_(variable), old_(std::exchange(variable, value)) {}
    ~Exchanged() { variable_ = old_; }
    Exchanged(const Exchanged&) = delete;
    Exchanged& operator=(const Exchanged&) = delete;

private:
    Value& variable_;
    Value old_;
};

std::string cancelText(const std::string& subject, const Progress& progress)
{
    return subject + ": cancelled after " + std::to_string(progress.doneBytes) + " of " +
           std::to_string(progress.totalBytes) + " bytes" +
           (progress.member.empty() ? "" : ", at member \"" + std::string(progress.member) + "\"");
}

}  // namespace

Cancelled::~Cancelled() = default;

ProgressWatch::ProgressWatch(ProgressFunction function)
    : function_(std::move(function)), outer_(std::exchange(innermost_, this))
{
}

ProgressWatch::~ProgressWatch()
{
    innermost_ = outer_;
}

ProgressWork::ProgressWork(std::string_view subject)
{
    ProgressWatch* watch = ProgressWatch::innermost_;
    if (current_ == nullptr && watch != nullptr && watch->function_ && !watch->isTelling_) {
        watch_ = watch;
        subject_ = subject;
        current_ = this;
    }
}

ProgressWork::~ProgressWork()
{
    if (current_ == this) {
        current_ = nullptr;
    }
}

void ProgressWork::tell(std::string_view member, std::uint64_t bytes)
{
    doneBytes_ += bytes;
    totalBytes_ = std::max(totalBytes_, doneBytes_);
    const Progress progress = {doneBytes_, totalBytes_, member};
    // What the function itself asks of the library is no part of this call.
    const Exchanged<ProgressWork*> notCounting(current_, nullptr);
    const Exchanged<bool> telling(watch_->isTelling_, true);
    if (!watch_->function_(progress)) {
        throw Cancelled(cancelText(subject_, progress));
    }
}

}  // namespace platform
