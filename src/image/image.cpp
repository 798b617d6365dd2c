#include "image/image.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <new>

#include "image/memory.h"
#include "image/pixel.h"
#include "image/progress.h"
#include "shell/errors.h"
#include "shell/frontend.h"

namespace lv {

namespace {

// Jobs of at least this many pixels show a progress box; smaller ones only
// the wait cursor.
constexpr int64_t kBoxThreshold = 10000;

int64_t StrideFor(int32_t kind, int64_t width)
{
    switch (kind) {
    case kImageBinary: return ImageRowBytes64((width + 7) / 8);
    case kImageGray: return ImageRowBytes64(width);
    case kImageColor: return ImageRowBytes64(width * 3);
    case kImageSolid: return 4;
    case kImageHistogram: return 1028;
    default: return 0;
    }
}

bool IsPicture(int32_t kind) { return kind >= kImageBinary && kind <= kImageColor; }

enum class BoxRule { Never, Always, Large };

// The negative of a row, padding included. For bytes 255 - v and the bitwise
// not are the same thing, so one rule serves 1-bit rows (not) and 8-bit rows
// (255 minus), eight bytes at a time; strides are multiples of 4.
void InvertBytes(const uint8_t* in, uint8_t* out, int32_t count)
{
    int32_t i = 0;
    for (; i + 8 <= count; i += 8) {
        uint64_t word;
        std::memcpy(&word, in + i, 8);
        word = ~word;
        std::memcpy(out + i, &word, 8);
    }
    for (; i < count; ++i) out[i] = static_cast<uint8_t>(~in[i]);
}

// The loop behind the four whole-image copies: allocate the destination in the
// source's shape, then copy (or invert) `stride` bytes per row from row 0 up,
// reporting each row to the box when one is shown.
int32_t CopyRows(const Image& source, Image& destination, bool negate, const char* title,
                 BoxRule rule)
{
    int32_t result =
        ImageAlloc(destination, source.kind, source.width, source.height, source.resolution);
    if (result) return result;
    const int32_t rowCount = ImageRowCount(source);
    const bool boxed =
        rowCount > 0 && (rule == BoxRule::Always ||
                         (rule == BoxRule::Large &&
                          static_cast<int64_t>(source.width) * source.height >= kBoxThreshold));
    if (boxed)
        ProgressOpen(0, rowCount - 1, title, true);
    else if (rule != BoxRule::Never)
        SetWaitCursor();

    for (int32_t y = 0; y < rowCount; ++y) {
        const uint8_t* in = source.rows[y];
        uint8_t* out = destination.rows[y];
        if (negate)
            InvertBytes(in, out, source.stride);
        else
            CopyBytes(in, out, static_cast<size_t>(source.stride));
        if (boxed && (result = ProgressStep(y)) != 0) break;
    }

    if (boxed)
        ProgressClose();
    else if (rule != BoxRule::Never)
        SetArrowCursor();
    return result;
}

// Bytes a pixel in kinds 2 and 3, the kinds that shift by bytes.
int32_t BytesPerPixel(int32_t kind) { return kind == kImageColor ? 3 : 1; }

}  // namespace

const char* ImageKindName(int32_t kind)
{
    switch (kind) {
    case kImageEmpty: return "Empty";
    case kImageBinary: return "Binary Image";
    case kImageGray: return "Black and White Image";
    case kImageColor: return "Color Image";
    case kImageSolid: return "Color";
    case kImageHistogram: return "Histogram";
    default: return "Unknown";
    }
}

namespace {

// Pictures from this size on come straight from the system's pages.
constexpr size_t kMappedBytes = size_t{4} << 20;
constexpr size_t kHugePage = size_t{2} << 20;

void ReleaseStore(PixelStore& store)
{
    if (store.base) {
        if (store.mapped)
            ::munmap(store.base, store.size);
        else
            delete[] store.base;
    }
    store.base = nullptr;
    store.size = 0;
    store.mapped = false;
}

// `size` bytes; false when memory is short.
bool TakeStore(PixelStore& store, size_t size)
{
    ReleaseStore(store);
    if (size < kMappedBytes) {
        store.base = new (std::nothrow) uint8_t[size > 0 ? size : 1];
        store.size = size;
        return store.base != nullptr;
    }
    // Aligned to a huge page, so that the system can back it with them: a
    // little more is mapped and the ends beyond the aligned piece given back.
    const size_t length = (size + kHugePage - 1) / kHugePage * kHugePage;
    void* raw = ::mmap(nullptr, length + kHugePage, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (raw == MAP_FAILED) return false;
    auto* start = static_cast<uint8_t*>(raw);
    const auto address = reinterpret_cast<uintptr_t>(start);
    uint8_t* aligned = start + ((kHugePage - address % kHugePage) % kHugePage);
    if (aligned > start) ::munmap(start, static_cast<size_t>(aligned - start));
    const size_t tail = static_cast<size_t>(start + length + kHugePage - (aligned + length));
    if (tail > 0) ::munmap(aligned + length, tail);
#ifdef MADV_HUGEPAGE
    ::madvise(aligned, length, MADV_HUGEPAGE);
#endif
    store.base = aligned;
    store.size = length;
    store.mapped = true;
    return true;
}

}  // namespace

PixelStore::~PixelStore() { ReleaseStore(*this); }

PixelStore::PixelStore(PixelStore&& other) noexcept
    : base(other.base), size(other.size), mapped(other.mapped)
{
    other.base = nullptr;
    other.size = 0;
    other.mapped = false;
}

PixelStore& PixelStore::operator=(PixelStore&& other) noexcept
{
    if (this != &other) {
        ReleaseStore(*this);
        base = other.base;
        size = other.size;
        mapped = other.mapped;
        other.base = nullptr;
        other.size = 0;
        other.mapped = false;
    }
    return *this;
}

void ImageClear(Image& image)
{
    // Owning members free what they hold, so clearing a record that still
    // holds memory cannot leak it.
    image.kind = image.width = image.height = image.stride = 0;
    image.resolution = 0.0;
    image.rows.reset();
    image.blockCount = image.rowsPerBlock = 0;
    image.blocks.reset();
    ReleaseStore(image.store);
}

void ImageFree(Image& image) { ImageClear(image); }

void ClearRowPadding(uint8_t* row, int32_t kind, int32_t width, int32_t stride)
{
    int32_t used;
    if (kind == kImageBinary) {
        used = (width + 7) / 8;
        if (width % 8) row[used - 1] &= static_cast<uint8_t>(0xFF00 >> (width % 8));
    } else {
        used = width * (kind == kImageColor ? 3 : 1);
    }
    if (stride > used) std::memset(row + used, 0, static_cast<size_t>(stride - used));
}

void ClearImagePadding(Image& image)
{
    if (image.kind < kImageBinary || image.kind > kImageColor || !image.rows) return;
    for (int32_t y = 0; y < image.height; ++y)
        ClearRowPadding(image.rows[y], image.kind, image.width, image.stride);
}

int32_t ImageRowCount(const Image& image)
{
    if (!image.rows) return 0;
    return image.kind == kImageSolid || image.kind == kImageHistogram ? 1 : image.height;
}

int32_t ImageBlockBytes(const Image& image, int32_t block)
{
    if (block < 0 || block >= image.blockCount) return 0;
    if (block < image.blockCount - 1) return image.rowsPerBlock * image.stride;
    int32_t lastRows = image.height % image.rowsPerBlock;
    if (lastRows == 0) lastRows = image.rowsPerBlock;
    return lastRows * image.stride;
}

namespace {

std::atomic<int64_t> gMemoryBudget{0};

int64_t MachineMemory()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    int64_t bytes = pages > 0 && pageSize > 0 ? int64_t{pages} * pageSize : INT64_MAX;
    for (int resource : {RLIMIT_AS, RLIMIT_DATA}) {
        struct rlimit limit;
        if (getrlimit(resource, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
            bytes = std::min<int64_t>(bytes, static_cast<int64_t>(limit.rlim_cur));
    }
    return bytes;
}

}  // namespace

int64_t ImageMemoryLimit()
{
    const int64_t budget = gMemoryBudget.load();
    return budget > 0 ? budget : MachineMemory();
}

void SetImageMemoryLimit(int64_t bytes) { gMemoryBudget.store(bytes > 0 ? bytes : 0); }

int32_t ImageAlloc(Image& image, int32_t kind, int32_t width, int32_t height, double resolution)
{
    if (image.kind == kind && image.width == width && image.height == height) {
        image.resolution = resolution;
        return kOk;
    }
    ImageFree(image);
    if (width < 0 || height < 0) return kErrOutOfMemory;
    image.kind = kind;
    image.width = width;
    image.height = height;
    image.resolution = resolution;
    if (kind < kImageBinary || kind > kImageHistogram) return kOk;

    // A row must fit in one block; wider rows are refused rather than making
    // rowsPerBlock zero.
    const int64_t stride = StrideFor(kind, width);
    if (stride > kBlockBytes) {
        ImageFree(image);
        return kErrOutOfMemory;
    }
    image.stride = static_cast<int32_t>(stride);
    const int32_t rowCount = IsPicture(kind) ? height : 1;
    if (image.stride == 0 || height == 0) return kOk;
    if (stride * rowCount > ImageMemoryLimit()) {
        ImageFree(image);
        return kErrOutOfMemory;
    }

    image.rowsPerBlock = kBlockBytes / image.stride;
    int32_t lastRows = height % image.rowsPerBlock;
    if (lastRows == 0) lastRows = image.rowsPerBlock;
    image.blockCount = static_cast<int32_t>(
        (static_cast<int64_t>(rowCount) + image.rowsPerBlock - 1) / image.rowsPerBlock);

    image.rows.reset(new (std::nothrow) uint8_t*[static_cast<size_t>(rowCount)]);
    image.blocks.reset(new (std::nothrow) uint8_t*[static_cast<size_t>(image.blockCount)]);
    // The blocks lie one after another in one piece; each keeps its own size.
    const size_t fullBlock = static_cast<size_t>(image.rowsPerBlock) * image.stride;
    const size_t total = fullBlock * static_cast<size_t>(image.blockCount - 1) +
                         static_cast<size_t>(lastRows) * image.stride;
    if (!image.rows || !image.blocks || !TakeStore(image.store, total)) {
        ImageFree(image);
        return kErrOutOfMemory;
    }
    for (int32_t b = 0; b < image.blockCount; ++b)
        image.blocks[b] = image.store.base + fullBlock * static_cast<size_t>(b);
    for (int32_t i = 0; i < rowCount; ++i)
        image.rows[i] = image.blocks[i / image.rowsPerBlock] +
                        static_cast<size_t>(i % image.rowsPerBlock) * image.stride;
    return kOk;
}

int32_t ImageDuplicate(const Image& source, Image& destination)
{
    return CopyRows(source, destination, false, "Copy", BoxRule::Never);
}

int32_t ImageCopyBoxed(const Image& source, Image& destination)
{
    return CopyRows(source, destination, false, "Copy", BoxRule::Always);
}

int32_t ImageCopy(const Image& source, Image& destination)
{
    if (!IsPicture(source.kind)) return kErrImageType;
    return CopyRows(source, destination, false, "Copy", BoxRule::Large);
}

int32_t ImageNegative(const Image& source, Image& destination)
{
    if (!IsPicture(source.kind)) return kErrImageType;
    return CopyRows(source, destination, true, "Negative", BoxRule::Large);
}

int32_t ImageCopyRect(const Image& source, int32_t x0, int32_t y0, int32_t x1, int32_t y1,
                      Image& destination)
{
    if (x0 < 0 || y0 < 0 || x1 < x0 || y1 < y0) return 73;
    const bool picture = IsPicture(source.kind);
    if (picture && (x1 >= source.width || y1 >= source.height)) return 73;
    const int32_t result =
        ImageAlloc(destination, source.kind, x1 - x0 + 1, y1 - y0 + 1, source.resolution);
    if (result || !picture || !destination.rows) return result;
    for (int32_t y = y0; y <= y1; ++y) {
        const uint8_t* in = source.rows[y];
        uint8_t* out = destination.rows[y - y0];
        if (source.kind == kImageBinary) {
            for (int32_t x = x0; x <= x1; ++x) PutBit(out, x - x0, GetBit(in, x));
        } else {
            const int32_t bpp = BytesPerPixel(source.kind);
            CopyBytes(in + static_cast<size_t>(x0) * bpp, out,
                      static_cast<size_t>(x1 - x0 + 1) * bpp);
        }
    }
    return kOk;
}

void ImageShiftLeft(Image& image, int32_t n)
{
    if (n <= 0 || !IsPicture(image.kind) || !image.rows) return;
    SetWaitCursor();
    for (int32_t y = 0; y < image.height; ++y) {
        uint8_t* row = image.rows[y];
        if (image.kind == kImageBinary) {
            for (int32_t x = 0; x < image.width - n; ++x) PutBit(row, x, GetBit(row, x + n));
        } else {
            // The row's padding moves with the pixels.
            const int64_t shift = static_cast<int64_t>(n) * BytesPerPixel(image.kind);
            if (shift < image.stride)
                CopyBytes(row + shift, row, static_cast<size_t>(image.stride - shift));
        }
    }
    SetArrowCursor();
}

void ImageShiftRight(Image& image, int32_t n)
{
    if (n <= 0 || !IsPicture(image.kind) || !image.rows) return;
    SetWaitCursor();
    for (int32_t y = 0; y < image.height; ++y) {
        uint8_t* row = image.rows[y];
        if (image.kind == kImageBinary) {
            for (int32_t x = image.width - 1; x >= n; --x) PutBit(row, x, GetBit(row, x - n));
        } else {
            const int64_t shift = static_cast<int64_t>(n) * BytesPerPixel(image.kind);
            if (shift < image.stride)
                CopyBytes(row, row + shift, static_cast<size_t>(image.stride - shift));
        }
    }
    SetArrowCursor();
}

void ImageShiftDown(Image& image, int32_t n)
{
    if (n <= 0 || !IsPicture(image.kind) || !image.rows) return;
    SetWaitCursor();
    for (int32_t y = 0; y + n < image.height; ++y)
        CopyBytes(image.rows[y + n], image.rows[y], static_cast<size_t>(image.stride));
    SetArrowCursor();
}

void ImageShiftUp(Image& image, int32_t n)
{
    if (n <= 0 || !IsPicture(image.kind) || !image.rows) return;
    SetWaitCursor();
    for (int32_t y = image.height - 1; y >= n; --y)
        CopyBytes(image.rows[y - n], image.rows[y], static_cast<size_t>(image.stride));
    SetArrowCursor();
}

namespace {

bool OutsidePicture(const Image& image, double x, double y)
{
    return !image.rows || !(x >= 0.0) || x > image.width - 1 || !(y >= 0.0) || y > image.height - 1;
}

// The corners and fractions of a bilinear sample. A one-pixel-wide or
// one-pixel-high image has no neighbour in that axis, so the sample stays on
// its only column or row there instead of stepping to column -1.
struct BilinearCell {
    int32_t x0, x1, y0, y1, fx, fy;
};

BilinearCell CellAt(const Image& image, double x, double y)
{
    BilinearCell c;
    c.x0 = static_cast<int32_t>(x);
    c.y0 = static_cast<int32_t>(y);
    c.fx = static_cast<int32_t>((x - c.x0) * 256.0);
    c.fy = static_cast<int32_t>((y - c.y0) * 256.0);
    if (c.x0 >= image.width - 1) {
        if (image.width >= 2) {
            c.x0 = image.width - 2;
            c.fx = 255;
        } else {
            c.fx = 0;
        }
    }
    if (c.y0 >= image.height - 1) {
        if (image.height >= 2) {
            c.y0 = image.height - 2;
            c.fy = 255;
        } else {
            c.fy = 0;
        }
    }
    c.x1 = image.width >= 2 ? c.x0 + 1 : c.x0;
    c.y1 = image.height >= 2 ? c.y0 + 1 : c.y0;
    return c;
}

}  // namespace

int32_t ImageSampleBit(const Image& image, double x, double y)
{
    if (image.kind != kImageBinary || OutsidePicture(image, x, y)) return 0;
    return GetBit(image.rows[RoundToInt(y)], RoundToInt(x));
}

int32_t ImageSampleGray(const Image& image, double x, double y)
{
    if (image.kind != kImageGray || OutsidePicture(image, x, y)) return 0;
    const int32_t ix = static_cast<int32_t>(x), iy = static_cast<int32_t>(y);
    if (static_cast<int32_t>((x - ix) * 256.0) == 0 && static_cast<int32_t>((y - iy) * 256.0) == 0)
        return image.rows[iy][ix];
    const BilinearCell c = CellAt(image, x, y);
    const uint8_t* lo = image.rows[c.y0];
    const uint8_t* hi = image.rows[c.y1];
    const auto fx = static_cast<uint8_t>(c.fx);
    return Lerp8(Lerp8(lo[c.x0], lo[c.x1], fx), Lerp8(hi[c.x0], hi[c.x1], fx),
                 static_cast<uint8_t>(c.fy));
}

void ImageSampleColor(const Image& image, double x, double y, uint8_t* red, uint8_t* green,
                      uint8_t* blue)
{
    *red = *green = *blue = 0;
    if (image.kind != kImageColor || OutsidePicture(image, x, y)) return;
    const int32_t ix = static_cast<int32_t>(x), iy = static_cast<int32_t>(y);
    uint8_t* out[3] = {blue, green, red};
    if (static_cast<int32_t>((x - ix) * 256.0) == 0 &&
        static_cast<int32_t>((y - iy) * 256.0) == 0) {
        const uint8_t* p = image.rows[iy] + static_cast<size_t>(ix) * 3;
        for (int ch = 0; ch < 3; ++ch) *out[ch] = p[ch];
        return;
    }
    const BilinearCell c = CellAt(image, x, y);
    const uint8_t* lo = image.rows[c.y0];
    const uint8_t* hi = image.rows[c.y1];
    const auto fx = static_cast<uint8_t>(c.fx);
    const size_t a = static_cast<size_t>(c.x0) * 3, b = static_cast<size_t>(c.x1) * 3;
    for (int ch = 0; ch < 3; ++ch)
        *out[ch] = Lerp8(Lerp8(lo[a + ch], lo[b + ch], fx), Lerp8(hi[a + ch], hi[b + ch], fx),
                         static_cast<uint8_t>(c.fy));
}

double ImageArea(const Image& image)
{
    if (image.kind != kImageGray || !image.rows) return 0.0;
    const bool boxed = static_cast<int64_t>(image.width) * image.height >= kBoxThreshold;
    if (boxed)
        ProgressOpen(0, image.height - 1, "Area", false);
    else
        SetWaitCursor();
    double area = 0.0;
    for (int32_t y = 0; y < image.height; ++y) {
        const uint8_t* row = image.rows[y];
        int64_t sum = 0;
        for (int32_t x = 0; x < image.width; ++x) sum += row[x];
        area += static_cast<double>(sum) / 255.0;
        if (boxed) ProgressStep(y);
    }
    if (boxed)
        ProgressClose();
    else
        SetArrowCursor();
    return area;
}

void ImageDrawDisk(Image& image, double centerX, double centerY, double radius,
                   const uint8_t color[3])
{
    if ((image.kind != kImageGray && image.kind != kImageColor) || !image.rows) return;
    if (!std::isfinite(centerX) || !std::isfinite(centerY) || !std::isfinite(radius)) return;
    // Truncation toward zero, widened by one pixel each side, then clipped.
    const double left = centerX - radius - 1.0, right = centerX + radius + 1.0;
    const double bottom = centerY - radius - 1.0, top = centerY + radius + 1.0;
    if (right < 0.0 || top < 0.0 || left > image.width - 1 || bottom > image.height - 1) return;
    const int32_t x0 = left < 0.0 ? 0 : static_cast<int32_t>(left);
    const int32_t y0 = bottom < 0.0 ? 0 : static_cast<int32_t>(bottom);
    const int32_t x1 = right > image.width - 1 ? image.width - 1 : static_cast<int32_t>(right);
    const int32_t y1 = top > image.height - 1 ? image.height - 1 : static_cast<int32_t>(top);

    const bool gray = image.kind == kImageGray;
    // Pixel bytes: one gray value, or blue, green, red.
    const uint8_t paint[3] = {gray ? luminance(color[0], color[1], color[2]) : color[2], color[1],
                              color[0]};
    const int32_t channels = gray ? 1 : 3;
    for (int32_t y = y0; y <= y1; ++y) {
        uint8_t* row = image.rows[y];
        const double dy = y - centerY;
        for (int32_t x = x0; x <= x1; ++x) {
            const double dx = x - centerX;
            const double e = std::sqrt(dx * dx + dy * dy) - radius;
            uint8_t* p = row + static_cast<size_t>(x) * channels;
            if (std::fabs(e) < 1.414214) {
                int32_t c = 0;
                for (int32_t j = -2; j <= 2; ++j)
                    for (int32_t i = -2; i <= 2; ++i) {
                        const double sx = dx + i * 0.25, sy = dy + j * 0.25;
                        if (std::sqrt(sx * sx + sy * sy) <= radius) ++c;
                    }
                for (int32_t ch = 0; ch < channels; ++ch)
                    p[ch] = static_cast<uint8_t>((c * paint[ch] + (25 - c) * p[ch]) / 25);
            } else if (e < 0.0) {
                for (int32_t ch = 0; ch < channels; ++ch) p[ch] = paint[ch];
            }
        }
    }
}

}  // namespace lv
