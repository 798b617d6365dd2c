#include "shell/safe_write.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "shell/errors.h"

namespace lv {

namespace {

std::mutex gNameLock;
uint64_t gNameState = 0;

// xorshift64*: enough to make a name nobody can guess ahead, seeded from
// the system the first time.
uint64_t NextRandom()
{
    std::lock_guard<std::mutex> hold(gNameLock);
    if (gNameState == 0) {
        uint64_t seed = 0;
        if (getrandom(&seed, sizeof seed, 0) != sizeof seed)
            seed = static_cast<uint64_t>(::getpid()) * 0x9E3779B97F4A7C15ull ^
                   static_cast<uint64_t>(reinterpret_cast<uintptr_t>(&seed));
        gNameState = seed ? seed : 1;
    }
    gNameState ^= gNameState >> 12;
    gNameState ^= gNameState << 25;
    gNameState ^= gNameState >> 27;
    return gNameState * 0x2545F4914F6CDD1Dull;
}

std::string FolderOf(const std::string& path)
{
    const size_t cut = path.find_last_of('/');
    if (cut == std::string::npos) return std::string();
    return path.substr(0, cut + 1);
}

// The file a name stands for, following symbolic links (a link that points
// nowhere yet gives the name it points to). False, with the reason, for a
// loop of links.
bool FollowLinks(const std::string& path, std::string& target)
{
    target = path;
    for (int32_t hops = 0; hops < 40; ++hops) {
        struct stat info;
        if (::lstat(target.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return true;
        char buffer[4096];
        const ssize_t length = ::readlink(target.c_str(), buffer, sizeof buffer - 1);
        if (length <= 0) return true;
        const std::string link(buffer, static_cast<size_t>(length));
        target = link[0] == '/' ? link : FolderOf(target) + link;
    }
    SetErrorDetail(std::strerror(ELOOP));
    return false;
}

int32_t CreateFailure(int error)
{
    SetErrorDetail(std::strerror(error));
    return error == EACCES || error == EPERM || error == EROFS ? kErrReadOnlyDisk
                                                               : kErrCannotCreate;
}

}  // namespace

SafeWrite::~SafeWrite() { SafeWriteDiscard(*this); }

void SafeWriteSeed(uint64_t seed)
{
    std::lock_guard<std::mutex> hold(gNameLock);
    gNameState = seed ? seed : 1;
}

std::string SafeWriteCandidate(const std::string& target)
{
    static const char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    uint64_t bits = NextRandom();
    std::string name = FolderOf(target) + ".";
    for (int32_t i = 0; i < 8; ++i) {
        name += kLetters[bits % 36];
        bits /= 36;
    }
    return name + ".tmp";
}

int32_t SafeWriteOpen(SafeWrite& write, const std::string& path)
{
    SafeWriteDiscard(write);
    write.hadTarget = false;
    if (!FollowLinks(path, write.target)) return kErrCannotCreate;
    struct stat info;
    if (::stat(write.target.c_str(), &info) == 0) {
        if (S_ISDIR(info.st_mode)) return CreateFailure(EISDIR);
        if (!S_ISREG(info.st_mode)) {
            SetErrorDetail("not a regular file");
            return kErrCannotCreate;
        }
        // Read-only by its mode (which even the administrator respects here)
        // or by its owner's say: left alone.
        if ((info.st_mode & 0222) == 0 || ::access(write.target.c_str(), W_OK) != 0) {
            SetErrorDetail("the file is read-only");
            return kErrReadOnlyDisk;
        }
        write.hadTarget = true;
        write.mode = info.st_mode & 07777;
        write.owner = info.st_uid;
        write.group = info.st_gid;
    }
    for (int32_t attempt = 0; attempt < kSafeWriteAttempts; ++attempt) {
        const std::string candidate = SafeWriteCandidate(write.target);
        // Never through a link, never over anything already there.
        const int descriptor =
            ::open(candidate.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (descriptor < 0) {
            if (errno == EEXIST || errno == ELOOP) continue;
            return CreateFailure(errno);
        }
        write.file.stream = ::fdopen(descriptor, "w+b");
        if (!write.file.stream) {
            const int error = errno;
            ::close(descriptor);
            ::unlink(candidate.c_str());
            return CreateFailure(error);
        }
        write.temporary = candidate;
        return kOk;
    }
    SetErrorDetail("every temporary name tried was taken");
    return kErrCannotCreate;
}

int32_t SafeWriteCommit(SafeWrite& write)
{
    if (!write.file.stream) return kErrCannotCreate;
    const int descriptor = fileno(write.file.stream);
    if (write.rewrite) {
        // The rewrite writes through a stream of its own, into the same file.
        if (std::fflush(write.file.stream) != 0) {
            SetErrorDetail(std::strerror(errno));
            SafeWriteDiscard(write);
            return kErrWriting;
        }
        if (int32_t code = write.rewrite(write.temporary, write.rewriteContext)) {
            SafeWriteDiscard(write);
            return code;
        }
    }
    // On the disk before the rename, so that a crash cannot leave an empty
    // or partial file under the target's name.
    if (std::fflush(write.file.stream) != 0 || ::fsync(descriptor) != 0) {
        SetErrorDetail(std::strerror(errno));
        SafeWriteDiscard(write);
        return kErrWriting;
    }
    if (write.hadTarget) {
        ::fchmod(descriptor, static_cast<mode_t>(write.mode));
        // The owner can be given back only by the administrator; the group
        // by a member of it. Where neither is allowed the new file is the
        // user's, as any new file would be.
        if (::fchown(descriptor, write.owner, write.group) != 0)
            (void)::fchown(descriptor, static_cast<uid_t>(-1), write.group);
    }
    if (FileClose(write.file) != kOk) {
        SetErrorDetail(std::strerror(errno));
        SafeWriteDiscard(write);
        return kErrClosing;
    }
    if (::rename(write.temporary.c_str(), write.target.c_str()) != 0) {
        const int32_t code = CreateFailure(errno);
        SafeWriteDiscard(write);
        return code;
    }
    write.temporary.clear();
    // The rename itself on the disk.
    const std::string folder = FolderOf(write.target);
    const int directory =
        ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory >= 0) {
        (void)::fsync(directory);
        ::close(directory);
    }
    return kOk;
}

void SafeWriteDiscard(SafeWrite& write)
{
    FileClose(write.file);
    if (!write.temporary.empty()) ::unlink(write.temporary.c_str());
    write.temporary.clear();
}

}  // namespace lv
