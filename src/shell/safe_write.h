// Writing a file in place of another without ever harming it: the new
// contents go to a hidden temporary file beside the target, created
// exclusively under an unpredictable name (never through a link someone
// planted), flushed to the disk, given the old file's permissions, and
// renamed over the target only when complete. Until then the old file is as
// it was; a failure or an abort removes the temporary.
//
// A target that is a symbolic link is followed: the file it points to is
// replaced and the link stays. A read-only target is refused and left alone.
// A target with other hard links is replaced by a new file under this one
// name; the other names keep the old contents.
#pragma once

#include <cstdint>
#include <string>

#include "shell/text.h"

namespace lv {

struct SafeWrite {
    std::string target;     // the file that will be replaced, links followed
    std::string temporary;  // the hidden file being written, or empty
    File file;              // open on the temporary between Open and Commit
    bool hadTarget = false;
    uint32_t mode = 0;  // the old file's permission bits
    uint32_t owner = 0, group = 0;
    // When set, it is given the complete temporary, by name, before it goes
    // to the disk for good, and may rewrite it in place (the metadata of a
    // picture goes in so); it returns 0 or the code that abandons the write.
    int32_t (*rewrite)(const std::string& temporary, const void* context) = nullptr;
    const void* rewriteContext = nullptr;

    SafeWrite() = default;
    ~SafeWrite();
    SafeWrite(const SafeWrite&) = delete;
    SafeWrite& operator=(const SafeWrite&) = delete;
};

// Creates the temporary for `path`. 0; 37 for a read-only target or folder,
// 3 when it cannot be created; the reason is left in ErrorDetail().
int32_t SafeWriteOpen(SafeWrite& write, const std::string& path);
// Flushes and closes the temporary, gives it the old file's permissions,
// and renames it over the target; the folder is flushed after. 0, or 6, 9,
// 37 or 3 with the reason, the temporary then removed.
int32_t SafeWriteCommit(SafeWrite& write);
// Closes and removes the temporary; the target is untouched.
void SafeWriteDiscard(SafeWrite& write);

// The name of the n-th temporary tried for a target: "." and eight random
// letters and digits, then ".tmp", in the target's folder. The letters come
// from a generator seeded once from the system; the tests seed it to know
// every name the program could choose.
std::string SafeWriteCandidate(const std::string& target);
void SafeWriteSeed(uint64_t seed);
inline constexpr int32_t kSafeWriteAttempts = 64;

}  // namespace lv
