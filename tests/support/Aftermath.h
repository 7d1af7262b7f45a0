#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "support/Container.h"
#include "support/Operation.h"
#include "support/TempDir.h"

namespace support {

/// All files below a directory by their relative paths: permissions and content.
using Files = std::map<std::string, std::string>;
Files filesIn(const std::string& dir);

/// The members of an archive as libzip and as this library read them; nothing when it is broken.
std::optional<Members> membersByLibzip(const std::string& path);
std::optional<Members> membersByUs(const std::string& path);
/// Whether bytes of an addition that was interrupted stand behind the archive's end; then other programs
/// may find it broken.
bool hasDebris(const std::string& path);

/// While it lives, the variable TMPDIR names another directory, provided that it is there.
class TmpdirVariable {
public:
    explicit TmpdirVariable(const std::string& value);
    ~TmpdirVariable();
    TmpdirVariable(const TmpdirVariable&) = delete;
    TmpdirVariable& operator=(const TmpdirVariable&) = delete;

private:
    std::string earlier_;
};

/// Runs an operation again and again, and judges what it leaves behind. While it lives, the scratch root
/// of the process lies in a directory of its own.
class Aftermath {
public:
    /// What one run told.
    struct Outcome {
        std::optional<std::string> result;
        std::string messages;  ///< one line each
        bool ranOutOfMemory = false;

        bool isReported() const { return !result || !messages.empty() || ranOutOfMemory; }
    };

    /// Prepares the operation and runs it once undisturbed, which must succeed.
    explicit Aftermath(const Operation& operation);
    ~Aftermath();
    Aftermath(const Aftermath&) = delete;
    Aftermath& operator=(const Aftermath&) = delete;

    const std::string& dir() const { return dir_; }
    std::string scratch() const { return base_ / "scratch"; }
    /// Whether the undisturbed operation changes files.
    bool writes() const { return before_ != after_; }
    /// The largest file that the undisturbed operation leaves.
    std::uint64_t largestBytes() const;
    /// Puts the directory to its state before the operation.
    void reset();
    /// Runs the operation, with calls in front and behind. An exception other than std::bad_alloc fails
    /// the test.
    Outcome run(
        const std::function<void()>& begin = [] {}, const std::function<void()>& end = [] {});

    /// Expects of a run that something went wrong in:
    /// - each file is the old one or the new one, bytes and permissions, and nothing else is there. An
    ///   archive may also be the new one without members that messages tell of, as libzip reads it;
    /// - without a report, everything is as without the failure.
    void expectOldOrNew(const Outcome& outcome) const;
    /// Expects the same of a run that was killed: what it wrote may still lie beside the files, and an
    /// archive's members count, not its bytes.
    void expectOldOrNewAfterDeath() const;
    /// Runs the operation after a death, which must give the new state.
    void expectSuccessAfterDeath();
    /// Expects that no scratch directory is left.
    void expectNoScratch() const;

private:
    bool isNewButFor(const std::string& file, const std::string& messages) const;

    const Operation& operation_;
    const TmpdirVariable inMemory_{"/dev/shm"};  // thousands of files are made anew
    const TempDir base_;
    const std::string dir_;
    std::optional<TmpdirVariable> inScratch_;
    std::string log_;  ///< of messages; never grows, so that memory can't run out in the test
    Files before_;
    Files after_;
    std::map<std::string, Members> oldMembers_;
    std::map<std::string, Members> newMembers_;
    std::string text_;
};

}  // namespace support
