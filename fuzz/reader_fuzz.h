// The harness shared by the fuzz targets of our own readers: any bytes must
// give 0 or -1, never a crash, a read outside memory, or rows out of order or
// of the wrong size. A header the program would refuse (rows wider than an
// image block, a picture beyond the budget below) is stopped there as the
// program stops it, so that a few bytes of run lengths claiming a huge
// picture cost no time.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "files/library.h"
#include "image/image.h"
#include "shell/text.h"

namespace fuzz {

// The most bytes of picture a fuzz target takes; the file targets give it to
// ImageAlloc as the memory limit.
inline constexpr int64_t kFuzzPictureBudget = int64_t{256} << 20;

struct Check {
    lv::LibraryHeader header;
    int32_t rows = 0;
    uint32_t sum = 0;
};

inline int32_t OnHeader(const lv::LibraryHeader& header, void* context)
{
    auto& check = *static_cast<Check*>(context);
    const int32_t bits = header.bitsPerPixel;
    if ((bits != 1 && bits != 8 && bits != 24) || header.width <= 0 || header.height <= 0 ||
        header.colorsUsed < 0 || header.colorsUsed > 256) {
        std::abort();
    }
    check.header = header;
    const int64_t rowBytes = (int64_t{header.width} * bits + 7) / 8;
    if (rowBytes > lv::kBlockBytes || rowBytes * header.height > kFuzzPictureBudget)
        return lv::kLibraryFailed;
    return 0;
}

// Reads every byte of the row, so that a short buffer shows under the
// address sanitizer.
inline int32_t OnRow(const uint8_t* data, void* context, int32_t row, int32_t bytes)
{
    auto& check = *static_cast<Check*>(context);
    const int64_t width = check.header.width;
    const int64_t expected =
        check.header.bitsPerPixel == 1 ? (width + 7) / 8 : width * (check.header.bitsPerPixel / 8);
    if (row != check.rows || bytes != expected) std::abort();
    for (int32_t i = 0; i < bytes; ++i) check.sum += data[i];
    ++check.rows;
    return 0;
}

// The bytes as an open file in memory, with a size and seeks as on disk.
inline bool OpenBytes(const uint8_t* data, size_t size, lv::File& file)
{
    int descriptor = memfd_create("lumivue_fuzz", 0);
    if (descriptor < 0) return false;
    for (size_t done = 0; done < size;) {
        ssize_t put = ::write(descriptor, data + done, size - done);
        if (put <= 0) {
            ::close(descriptor);
            return false;
        }
        done += static_cast<size_t>(put);
    }
    ::lseek(descriptor, 0, SEEK_SET);
    file.stream = ::fdopen(descriptor, "rb");
    if (!file.stream) ::close(descriptor);
    return file.stream != nullptr;
}

// Runs a reader over the bytes and checks what it delivered.
inline int RunReader(int32_t (*read)(lv::File&, const lv::LibraryReader&), const uint8_t* data,
                     size_t size)
{
    lv::File file;
    if (!OpenBytes(data, size, file)) return 0;
    Check check;
    lv::LibraryReader reader{OnHeader, OnRow, &check};
    const int32_t result = read(file, reader);
    if (result != 0 && result != lv::kLibraryFailed) std::abort();
    if (result == 0 && check.rows != check.header.height) std::abort();
    return 0;
}

}  // namespace fuzz
