// Small helpers the codecs of our own formats share: little-endian fields,
// allocation that reports failure, and how a stopped callback is passed on.
#pragma once

#include <algorithm>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <vector>

#include "files/library.h"
#include "shell/errors.h"
#include "shell/text.h"

namespace lv::codec {

inline uint16_t Get16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }

inline uint32_t Get32(const uint8_t* p)
{
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

inline void Put16(uint8_t* p, uint32_t v)
{
    p[0] = static_cast<uint8_t>(v);
    p[1] = static_cast<uint8_t>(v >> 8);
}

inline void Put32(uint8_t* p, uint32_t v)
{
    Put16(p, v);
    Put16(p + 2, v >> 16);
}

// A callback's -999 goes back as it is; anything else is a failed file.
inline int32_t Stopped(int32_t result)
{
    return result == kLibraryAbort ? kLibraryAbort : kLibraryFailed;
}

// Sizes the buffer, zero-filled; false when memory is short.
inline bool Allocate(std::vector<uint8_t>& buffer, int64_t size)
{
    try {
        buffer.assign(static_cast<size_t>(size), 0);
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
    return true;
}

// A stretch of a file read one byte at a time through a 64 KB buffer, so the
// run-length decoders never go to the file for each byte.
struct ByteSource {
    File* file = nullptr;
    int64_t left = 0;  // bytes of the stretch not yet in the buffer
    std::vector<uint8_t> buffer;
    int64_t at = 0;
    int64_t end = 0;
};

// Starts reading at `start`, up to `stop`. The buffer is made on the first
// start and kept for the next; false on a failed seek or short memory.
inline bool ByteSourceStart(ByteSource& in, File& file, int64_t start, int64_t stop)
{
    if (in.buffer.empty() && !Allocate(in.buffer, 65536)) return false;
    in.file = &file;
    in.left = stop - start;
    in.at = in.end = 0;
    return FileSeek(file, start) == kOk;
}

// False when the stretch or the file ends first.
inline bool NextByte(ByteSource& in, uint8_t& byte)
{
    if (in.at == in.end) {
        if (in.left <= 0) return false;
        int64_t count = std::min<int64_t>(in.left, static_cast<int64_t>(in.buffer.size()));
        const int64_t wanted = count;
        if (FileRead(*in.file, count, in.buffer.data()) != kOk || count != wanted) return false;
        in.left -= count;
        in.at = 0;
        in.end = count;
    }
    byte = in.buffer[in.at++];
    return true;
}

// Whether a header's table is the plain gray ramp, entry i gray level i.
inline bool IsGrayRamp(const LibraryHeader& header)
{
    for (int i = 0; i < 256; ++i) {
        if (header.palette[i][0] != i || header.palette[i][1] != i || header.palette[i][2] != i)
            return false;
    }
    return true;
}

}  // namespace lv::codec
