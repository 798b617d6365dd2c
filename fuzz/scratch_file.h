// The file a fuzz target hands its input to a reader through: one name for
// this process, written afresh for each input and removed when the process
// ends.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace fuzz {

struct ScratchFile {
    std::string path;

    // "/tmp/lumivue-<stem>-<process id><suffix>".
    ScratchFile(const std::string& stem, const std::string& suffix)
        : path("/tmp/lumivue-" + stem + "-" + std::to_string(::getpid()) + suffix)
    {
    }
    ~ScratchFile() { std::remove(path.c_str()); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    // False when the bytes could not all be written; the input is then
    // skipped.
    bool Write(const uint8_t* data, size_t size) const
    {
        std::FILE* out = std::fopen(path.c_str(), "wb");
        if (!out) return false;
        const bool written = std::fwrite(data, 1, size, out) == size;
        return std::fclose(out) == 0 && written;
    }
};

}  // namespace fuzz
