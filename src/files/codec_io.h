// Small helpers every codec shares: little-endian fields, buffers that report
// a shortage of memory instead of throwing, the size of a row, the reasons a
// codec leaves for a refusal, and how a stopped callback is passed on.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "files/library.h"
#include "image/image.h"
#include "image/memory.h"
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

// ---- Reasons ------------------------------------------------------------------------

// Records why a file was refused and gives the codec's failure, so that a
// refusal is one line: `return Refuse("not a BMP file");`.
inline int32_t Refuse(std::string reason)
{
    SetErrorDetail(std::move(reason));
    return kLibraryFailed;
}

// The same for the helpers that answer true or false.
inline bool Reject(std::string reason)
{
    SetErrorDetail(std::move(reason));
    return false;
}

// The system's reason for the failure of the call that has just returned,
// from errno; `fallback` when errno names none.
inline std::string SystemReason(const char* fallback)
{
    const int error = errno;
    return error != 0 ? std::string(std::strerror(error)) : std::string(fallback);
}

// A library's message as a reason: its first letter in lower case, unless
// the word is an abbreviation ("JPEG datastream ..." stays as it is).
inline std::string LibraryReason(const char* message, const char* fallback)
{
    std::string text = message && *message ? message : fallback;
    while (!text.empty() && (text.back() == '\n' || text.back() == '.' || text.back() == ' '))
        text.pop_back();
    if (text.size() >= 2 && text[0] >= 'A' && text[0] <= 'Z' && !(text[1] >= 'A' && text[1] <= 'Z'))
        text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

// A callback's -999 goes back as it is; anything else is a failed file. The
// callback leaves its own reason.
inline int32_t Stopped(int32_t result)
{
    return result == kLibraryAbort ? kLibraryAbort : kLibraryFailed;
}

// ---- Files --------------------------------------------------------------------------

// Reads `count` bytes at `position`. False when they are not all there,
// with `shortReason` when the file ends first, or the system's reason.
inline bool ReadAt(File& file, int64_t position, int64_t count, void* buffer,
                   const char* shortReason)
{
    errno = 0;
    if (FileSeek(file, position) != kOk) return Reject(SystemReason(shortReason));
    int64_t got = count;
    const int32_t code = FileRead(file, got, buffer);
    if (code == kOk && got == count) return true;
    return Reject(code == kErrReading ? SystemReason(shortReason) : std::string(shortReason));
}

// Writes `count` bytes where the file stands; false with the system's reason.
inline bool WriteAll(File& file, int64_t count, const void* buffer)
{
    errno = 0;
    if (FileWrite(file, count, buffer) == kOk) return true;
    return Reject(SystemReason("cannot write the file"));
}

// Moves to `position` for writing; false with the system's reason.
inline bool SeekTo(File& file, int64_t position)
{
    errno = 0;
    if (FileSeek(file, position) == kOk) return true;
    return Reject(SystemReason("cannot set the file position"));
}

// ---- Buffers ------------------------------------------------------------------------

// Bytes that a shortage of memory reports instead of throwing. Empty until
// Allocate fills it.
struct ByteBuffer {
    std::unique_ptr<uint8_t[]> data;
    size_t size = 0;

    uint8_t* get() { return data.get(); }
    const uint8_t* get() const { return data.get(); }
    uint8_t& operator[](size_t i) { return data[i]; }
    const uint8_t& operator[](size_t i) const { return data[i]; }
    void Clear() { std::memset(data.get(), 0, size); }
};

// Makes the buffer `size` bytes, zero-filled. False, with the reason "out
// of memory", when memory is short or the size cannot be held.
inline bool Allocate(ByteBuffer& buffer, int64_t size)
{
    buffer.data.reset();
    buffer.size = 0;
    // A buffer as large as a picture obeys the same budget as the picture.
    if (size < 0 || static_cast<uint64_t>(size) > SIZE_MAX / 2 || size > ImageMemoryLimit())
        return Reject("out of memory");
    buffer.data = AllocBytes(static_cast<size_t>(size));
    if (!buffer.data) return Reject("out of memory");
    buffer.size = static_cast<size_t>(size);
    buffer.Clear();
    return true;
}

// ---- Rows ---------------------------------------------------------------------------

// Bytes of a row of `width` pixels of 1, 4, 8 or 24 bits, packed, with the
// last byte of a 1 or 4-bit row filled out.
inline int64_t RowBytes(int64_t width, int32_t bitsPerPixel)
{
    return (width * bitsPerPixel + 7) / 8;
}

// The writers' check of the header they are handed: 1, 8 or 24 bits a pixel
// and sides from 1 to `largestSide`. 0, or the failure with its reason.
inline int32_t CheckWriteHeader(const LibraryHeader& header, int32_t largestSide = INT32_MAX)
{
    const int32_t bits = header.bitsPerPixel;
    if (bits != 1 && bits != 8 && bits != 24)
        return Refuse(FormatText("cannot write pictures of %d bits a pixel", bits));
    if (header.width <= 0 || header.height <= 0 || header.width > largestSide ||
        header.height > largestSide)
        return Refuse(
            FormatText("cannot write a picture of %d x %d pixels", header.width, header.height));
    return 0;
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

// ---- Sequential reading -------------------------------------------------------------

// A stretch of a file read one byte at a time through a 64 KB buffer, so the
// run-length decoders never go to the file for each byte.
struct ByteSource {
    File* file = nullptr;
    int64_t left = 0;  // bytes of the stretch not yet in the buffer
    ByteBuffer buffer;
    int64_t at = 0;
    int64_t end = 0;
};

// Starts reading at `start`, up to `stop`. The buffer is made on the first
// start and kept for the next; false, with the reason, on a failed seek or
// short memory.
inline bool ByteSourceStart(ByteSource& in, File& file, int64_t start, int64_t stop)
{
    if (!in.buffer.data && !Allocate(in.buffer, 65536)) return false;
    in.file = &file;
    in.left = stop - start;
    in.at = in.end = 0;
    return SeekTo(file, start);
}

// False when the stretch or the file ends first. Leaves no reason: the
// decoders know what they were reading.
inline bool NextByte(ByteSource& in, uint8_t& byte)
{
    if (in.at == in.end) {
        if (in.left <= 0) return false;
        int64_t count = std::min<int64_t>(in.left, static_cast<int64_t>(in.buffer.size));
        const int64_t wanted = count;
        if (FileRead(*in.file, count, in.buffer.get()) != kOk || count != wanted) return false;
        in.left -= count;
        in.at = 0;
        in.end = count;
    }
    byte = in.buffer[static_cast<size_t>(in.at++)];
    return true;
}

}  // namespace lv::codec
