// The one in-memory form of a picture.
//
// An Image owns a table of row pointers over memory blocks of at most 65000
// bytes. Rows are stored bottom first (row 0 is the bottom of the picture) and
// are not contiguous across blocks, so pixel code always goes through `rows`.
// The screen painter hands the blocks to the display one at a time, which is
// why the block rule is part of the design.
#pragma once

#include <cstdint>
#include <memory>

namespace lv {

enum ImageKind : int32_t {
    kImageEmpty = 0,
    kImageBinary = 1,     // 1 bit a pixel, most significant bit leftmost, set is white
    kImageGray = 2,       // 1 byte a pixel, 0 black, 255 white
    kImageColor = 3,      // 3 bytes a pixel: blue, green, red
    kImageSolid = 4,      // one row: red, green, blue and a spare byte
    kImageHistogram = 5,  // one row of 257 32-bit counts: the peak, then 256 bins
};

inline constexpr int32_t kBlockBytes = 65000;

// The memory behind a picture's blocks, one piece laid out block after
// block: from the system's pages, aligned for huge pages and asked to use
// them, for large pictures (fewer page faults on a fresh picture), from the
// heap for small ones. Freed with the record.
struct PixelStore {
    uint8_t* base = nullptr;
    size_t size = 0;
    bool mapped = false;

    PixelStore() = default;
    ~PixelStore();
    PixelStore(PixelStore&& other) noexcept;
    PixelStore& operator=(PixelStore&& other) noexcept;
    PixelStore(const PixelStore&) = delete;
    PixelStore& operator=(const PixelStore&) = delete;
};

struct Image {
    int32_t kind = 0;
    int32_t width = 0;
    int32_t height = 0;
    int32_t stride = 0;
    double resolution = 0.0;  // pixels per inch, both axes
    std::unique_ptr<uint8_t*[]> rows;
    int32_t blockCount = 0;
    int32_t rowsPerBlock = 0;
    std::unique_ptr<uint8_t*[]> blocks;  // into `store`, each at most 65000 bytes
    PixelStore store;
};

// What a file says of its picture, without its pixels.
struct PictureInfo {
    int32_t kind = 0;
    int32_t width = 0;
    int32_t height = 0;
    double resolution = 0.0;
};

// The name Window Info gives a kind: "Empty", "Binary Image", "Black and
// White Image", "Color Image", "Color", "Histogram" or "Unknown".
const char* ImageKindName(int32_t kind);

// Life cycle. ImageAlloc gives the record the requested shape; with the same
// kind and size as it has, only the resolution changes and the pixels stay.
// Result 0, or 1 when memory is short or a row would exceed one block. Block
// contents are not cleared.
// A picture larger than ImageMemoryLimit() is refused with 1 before anything
// is allocated, whatever file or worker asked for it.
void ImageClear(Image& image);
int32_t ImageAlloc(Image& image, int32_t kind, int32_t width, int32_t height, double resolution);
void ImageFree(Image& image);
inline int32_t ImageRowBytes(int32_t n) { return (n + 3) & ~3; }

// Clears what lies beyond `width` pixels in a row of a picture of `kind`:
// the spare bits of a 1-bit row's last byte and the padding bytes up to
// `stride`, so that a result's bytes never depend on what memory held.
void ClearRowPadding(uint8_t* row, int32_t kind, int32_t width, int32_t stride);
// The same for every row of a picture.
void ClearImagePadding(Image& image);

// The most bytes one picture's pixels may take: the machine's memory, or the
// process's own address-space or data limit when lower, unless a smaller
// budget was set (the fuzzers set one). SetImageMemoryLimit(0) goes back to
// the machine's.
int64_t ImageMemoryLimit();
void SetImageMemoryLimit(int64_t bytes);

// Rows that hold memory: `height` for pictures, 1 for a solid colour or a
// histogram, 0 when nothing is allocated.
int32_t ImageRowCount(const Image& image);
// Bytes in block b; every block but the last holds rowsPerBlock rows.
int32_t ImageBlockBytes(const Image& image, int32_t block);

// Whole-image copies. Duplicate shows nothing; CopyBoxed always shows a box
// titled "Copy"; Copy and Negative take kinds 1 to 3 only (else 14) and show
// a box when width * height is at least 10000, the wait cursor otherwise.
// After an abort (11) the destination keeps the rows already written.
int32_t ImageDuplicate(const Image& source, Image& destination);
int32_t ImageCopyBoxed(const Image& source, Image& destination);
int32_t ImageCopy(const Image& source, Image& destination);
int32_t ImageNegative(const Image& source, Image& destination);

// Copies the inclusive rectangle (x0, y0)-(x1, y1). A rectangle that is empty
// or reaches outside the source is refused with 73.
int32_t ImageCopyRect(const Image& source, int32_t x0, int32_t y0, int32_t x1, int32_t y1,
                      Image& destination);

// Move pixels n columns or rows within the image for scrolling a display
// copy. The vacated strip keeps its old contents; the caller repaints it.
void ImageShiftLeft(Image& image, int32_t n);
void ImageShiftRight(Image& image, int32_t n);
void ImageShiftDown(Image& image, int32_t n);
void ImageShiftUp(Image& image, int32_t n);

// Samplers at real coordinates; 0 outside the picture. Gray and colour are
// bilinear with fractions scaled by 256.
int32_t ImageSampleBit(const Image& image, double x, double y);
int32_t ImageSampleGray(const Image& image, double x, double y);
void ImageSampleColor(const Image& image, double x, double y, uint8_t* red, uint8_t* green,
                      uint8_t* blue);

// The sum of a gray image's values divided by 255: the area of a mask.
double ImageArea(const Image& image);

// A filled antialiased disk in a gray or colour image; `color` is red, green,
// blue. Other kinds are left alone.
void ImageDrawDisk(Image& image, double centerX, double centerY, double radius,
                   const uint8_t color[3]);

}  // namespace lv
