#include "files/jpeg.h"

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <type_traits>

#include <jerror.h>
#include <jpeglib.h>

#include "files/codec_io.h"
#include "files/metadata.h"
#include "image/memory.h"
#include "image/pixel.h"
#include "image/progress.h"
#include "shell/errors.h"
#include "shell/safe_write.h"
#include "shell/preferences.h"
#include "shell/text.h"

namespace lv {

namespace {

inline constexpr int32_t kErrJpegRead = 22;
inline constexpr int32_t kErrJpegWrite = 23;

// ---------------------------------------------------------------------------
// Errors. libjpeg reports a fatal error by calling error_exit, which must not
// return. Ours leaves libjpeg's message as the reason and longjmps back to the
// function that started the work. Those functions (DecodeJpeg, EncodeJpeg)
// keep every piece of state in a job record of plain C data, and no C++
// object with a destructor lives between their setjmp and any libjpeg call,
// so the jump skips no destructor. Memory that libjpeg allocates belongs to
// its own pools and goes with jpeg_destroy_*.

struct JumpTarget {
    std::jmp_buf buffer;
    int32_t code;         // the result the jump carries
    int32_t failureCode;  // what a libjpeg error means here: 22 reading, 23 writing
    // The file ended and libjpeg went on with an invented end marker; its
    // words for that, which become the reason of a refusal that follows.
    bool endSeen;
    char endMessage[JMSG_LENGTH_MAX];
};

[[noreturn]] void JumpWith(j_common_ptr cinfo, int32_t code)
{
    JumpTarget* target = static_cast<JumpTarget*>(cinfo->client_data);
    target->code = code;
    std::longjmp(target->buffer, 1);
}

// Refuses a file that ended before its picture did.
[[noreturn]] void FailAtEnd(j_common_ptr cinfo)
{
    const JumpTarget* target = static_cast<const JumpTarget*>(cinfo->client_data);
    SetErrorDetail(codec::LibraryReason(target->endMessage, "premature end of JPEG file"));
    JumpWith(cinfo, target->failureCode);
}

void OnJpegError(j_common_ptr cinfo)
{
    const JumpTarget* target = static_cast<const JumpTarget*>(cinfo->client_data);
    const int code = cinfo->err->msg_code;
    if (code == JERR_OUT_OF_MEMORY) {
        SetErrorDetail("out of memory");
        JumpWith(cinfo, kErrOutOfMemory);
    }
    // Whatever goes wrong after the end of the file was its cutting short.
    if (target->endSeen) FailAtEnd(cinfo);
    if (code == JERR_FILE_WRITE) {
        SetErrorDetail(codec::SystemReason("cannot write the file"));
    } else {
        char text[JMSG_LENGTH_MAX] = {};
        (*cinfo->err->format_message)(cinfo, text);
        SetErrorDetail(codec::LibraryReason(text, "damaged JPEG file"));
    }
    JumpWith(cinfo, target->failureCode);
}

// Traces and warnings are dropped: nothing is printed. The end of the file
// is noted, and libjpeg goes on with an invented end marker. That is what a
// file complete but for its end marker needs; a file cut inside its picture
// data is refused by the next warning, when the scan wants data past the
// end, rather than painted gray. Arithmetic-coded data gives no such sign,
// so those files must be whole.
void OnJpegMessage(j_common_ptr cinfo, int level)
{
    if (level >= 0) return;
    JumpTarget* target = static_cast<JumpTarget*>(cinfo->client_data);
    const int code = cinfo->err->msg_code;
    if (code == JWRN_JPEG_EOF) {
        if (!target->endSeen) {
            target->endSeen = true;
            (*cinfo->err->format_message)(cinfo, target->endMessage);
        }
        if (cinfo->is_decompressor && reinterpret_cast<j_decompress_ptr>(cinfo)->arith_code)
            FailAtEnd(cinfo);
    } else if (code == JWRN_HIT_MARKER && target->endSeen) {
        FailAtEnd(cinfo);
    }
}

void OnJpegOutput(j_common_ptr) {}

// libjpeg's own way of passing either record to its common calls.
j_common_ptr Common(jpeg_decompress_struct& cinfo)
{
    return reinterpret_cast<j_common_ptr>(&cinfo);
}

void InstallErrorHandlers(jpeg_error_mgr& errors)
{
    jpeg_std_error(&errors);
    errors.error_exit = OnJpegError;
    errors.emit_message = OnJpegMessage;
    errors.output_message = OnJpegOutput;
}

// ---------------------------------------------------------------------------
// Reading


struct ReadJob {
    JumpTarget jump;
    jpeg_decompress_struct cinfo;
    jpeg_error_mgr errors;
    jpeg_progress_mgr progress;
    std::FILE* stream;
    int64_t fileSize;
    Image* image;
    double resolution;
    bool showBox;
    bool boxOpen;
    int32_t lastPercent;
    bool scanned[MAX_COMPONENTS];  // components met in the scans of a multi-scan file
    PictureInfo* info;             // set: the header is all that is wanted
};
// Nothing here has a destructor for a jump to skip, and libjpeg's client
// data, which points at the job, also points at its jump target.
static_assert(std::is_trivially_destructible_v<ReadJob> && std::is_standard_layout_v<ReadJob>);

// The percent done of the whole read, from libjpeg's pass counters: a
// multi-scan file (progressive, or one scan per component) first reads all
// its scans, one pass, then writes out its rows, the second pass.
int32_t PassPercent(const jpeg_progress_mgr& progress, int64_t counter, int64_t limit)
{
    if (limit <= 0 || progress.total_passes <= 0) return 0;
    if (counter > limit) counter = limit;
    const int64_t done = progress.completed_passes * limit + counter;
    return static_cast<int32_t>(done * 100 / (int64_t{progress.total_passes} * limit));
}

// Reports a step to the box; a Cancel ends the read with 11.
void ReportReadStep(ReadJob& job, int32_t percent)
{
    if (!job.boxOpen) return;
    if (percent < job.lastPercent) percent = job.lastPercent;  // libjpeg may revise its estimate
    if (percent > 100) percent = 100;
    job.lastPercent = percent;
    if (ProgressStep(percent) != 0) JumpWith(Common(job.cinfo), kErrAborted);
}

// Called by libjpeg while it reads the scans of a multi-scan file, before the
// first row comes out.
void OnReadProgress(j_common_ptr cinfo)
{
    ReadJob* job = static_cast<ReadJob*>(cinfo->client_data);
    // Called once at least in every scan, with the scan's components known.
    const jpeg_decompress_struct& decompress = job->cinfo;
    for (int i = 0; i < decompress.comps_in_scan; ++i) {
        const int index = decompress.cur_comp_info[i]->component_index;
        if (index >= 0 && index < MAX_COMPONENTS) job->scanned[index] = true;
    }
    const jpeg_progress_mgr& progress = *cinfo->progress;
    ReportReadStep(*job, PassPercent(progress, progress.pass_counter, progress.pass_limit));
}

inline uint8_t Product8(int32_t a, int32_t b) { return static_cast<uint8_t>((a * b + 127) / 255); }

// CMYK to blue, green, red. Files with an Adobe marker (Photoshop's, and
// every YCCK file) store the inks inverted, 255 meaning none; the others store
// 0 for none. Red is what cyan and black leave of white, and so on.
void CmykToBgr(const uint8_t* in, uint8_t* out, int32_t width, bool inverted)
{
    for (int32_t x = 0; x < width; ++x, in += 4, out += 3) {
        int32_t c = in[0], m = in[1], y = in[2], k = in[3];
        if (!inverted) c = 255 - c, m = 255 - m, y = 255 - y, k = 255 - k;
        out[0] = Product8(y, k);
        out[1] = Product8(m, k);
        out[2] = Product8(c, k);
    }
}

// Whether a multi-scan file brought in all its data: every component in
// some scan and, when progressive, every coefficient to full precision.
// Asked only of a file that ended before its end marker, whose scans may
// have stopped between two of them.
bool ScansComplete(const ReadJob& job)
{
    const jpeg_decompress_struct& cinfo = job.cinfo;
    for (int c = 0; c < cinfo.num_components && c < MAX_COMPONENTS; ++c) {
        if (!job.scanned[c]) return false;
        if (!cinfo.progressive_mode || !cinfo.coef_bits) continue;
        for (int k = 0; k < DCTSIZE2; ++k)
            if (cinfo.coef_bits[c][k] != 0) return false;
    }
    return true;
}

// Whether rows of that width fit in a block of the image record.
bool RowsFit(int32_t width, bool gray)
{
    return ImageRowBytes64(int64_t{width} * (gray ? 1 : 3)) <= kBlockBytes;
}

// The libjpeg part of a read. Returns 0 or a result code, with the reason;
// on failure the image may hold a partial picture, which the caller frees.
int32_t DecodeJpeg(ReadJob& job)
{
    jpeg_decompress_struct& cinfo = job.cinfo;
    cinfo.err = &job.errors;
    InstallErrorHandlers(job.errors);
    job.jump.failureCode = kErrJpegRead;
    cinfo.client_data = &job;  // the jump target is the job's first member
    if (setjmp(job.jump.buffer)) {
        jpeg_destroy_decompress(&cinfo);
        return job.jump.code;
    }
    jpeg_create_decompress(&cinfo);
    jpeg_stdio_src(&cinfo, job.stream);
    jpeg_read_header(&cinfo, TRUE);


    const bool gray = cinfo.num_components == 1;
    const bool cmyk = cinfo.jpeg_color_space == JCS_CMYK || cinfo.jpeg_color_space == JCS_YCCK;
    cinfo.out_color_space = gray ? JCS_GRAYSCALE : (cmyk ? JCS_CMYK : JCS_EXT_BGR);
    jpeg_calc_output_dimensions(&cinfo);
    const int32_t width = static_cast<int32_t>(cinfo.output_width);
    const int32_t height = static_cast<int32_t>(cinfo.output_height);
    if (job.info) {
        *job.info = {gray ? kImageGray : kImageColor, width, height, job.resolution};
        jpeg_destroy_decompress(&cinfo);
        return kOk;
    }
    if (!RowsFit(width, gray)) {
        SetErrorDetail(FormatText("rows of %d pixels are too wide", width));
        JumpWith(Common(cinfo), kErrJpegRead);
    }
    // The record refuses a picture larger than the memory before taking any.
    if (ImageAlloc(*job.image, gray ? kImageGray : kImageColor, width, height, job.resolution)) {
        SetErrorDetail(
            FormatText("a picture of %d x %d pixels does not fit in memory", width, height));
        JumpWith(Common(cinfo), kErrOutOfMemory);
    }

    JSAMPARRAY cmykRow = nullptr;
    if (cmyk)
        cmykRow = (*cinfo.mem->alloc_sarray)(Common(cinfo), JPOOL_IMAGE,
                                             static_cast<JDIMENSION>(width) * 4, 1);

    if (job.showBox) {
        ProgressOpen(0, 100, "File Open (JPEG)", true);
        job.boxOpen = true;
    }
    job.progress.progress_monitor = OnReadProgress;
    cinfo.progress = &job.progress;
    jpeg_start_decompress(&cinfo);
    // From here on the steps come from the rows themselves.
    cinfo.progress = nullptr;
    // A multi-scan file has been read in whole by now.
    if (job.jump.endSeen && jpeg_has_multiple_scans(&cinfo) && !ScansComplete(job))
        FailAtEnd(Common(cinfo));

    const int32_t bytesPerPixel = gray ? 1 : 3;
    const size_t used = static_cast<size_t>(width) * bytesPerPixel;
    const size_t padding = static_cast<size_t>(job.image->stride) - used;
    while (cinfo.output_scanline < cinfo.output_height) {
        uint8_t* target = job.image->rows[height - 1 - static_cast<int32_t>(cinfo.output_scanline)];
        JSAMPROW row = cmyk ? cmykRow[0] : target;
        if (jpeg_read_scanlines(&cinfo, &row, 1) != 1) {
            SetErrorDetail("damaged JPEG file");
            JumpWith(Common(cinfo), kErrJpegRead);
        }
        if (cmyk) CmykToBgr(row, target, width, cinfo.saw_Adobe_marker != 0);
        if (padding > 0) std::memset(target + used, 0, padding);
        ReportReadStep(job, PassPercent(job.progress, cinfo.output_scanline, height));
    }
    // jpeg_finish_decompress is skipped on purpose: it would read on to the
    // end marker, and a file whose rows are all there is good enough. So is
    // one that ends where its end marker should be: the rows are all there.
    jpeg_destroy_decompress(&cinfo);
    return kOk;
}

// ---------------------------------------------------------------------------
// Writing

struct WriteJob {
    JumpTarget jump;
    jpeg_compress_struct cinfo;
    jpeg_error_mgr errors;
    std::FILE* stream;
    const Image* image;
    int32_t scale;
    int32_t sampling;
};
static_assert(std::is_trivially_destructible_v<WriteJob> && std::is_standard_layout_v<WriteJob>);

// The libjpeg part of a write. Returns 0 or a result code.
int32_t EncodeJpeg(WriteJob& job)
{
    jpeg_compress_struct& cinfo = job.cinfo;
    const Image& image = *job.image;
    cinfo.err = &job.errors;
    InstallErrorHandlers(job.errors);
    job.jump.failureCode = kErrJpegWrite;
    cinfo.client_data = &job;
    if (setjmp(job.jump.buffer)) {
        jpeg_destroy_compress(&cinfo);
        return job.jump.code;
    }
    jpeg_create_compress(&cinfo);
    jpeg_stdio_dest(&cinfo, job.stream);
    cinfo.image_width = static_cast<JDIMENSION>(image.width);
    cinfo.image_height = static_cast<JDIMENSION>(image.height);
    const bool gray = image.kind == kImageGray;
    cinfo.input_components = gray ? 1 : 3;
    cinfo.in_color_space = gray ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_set_defaults(&cinfo);
    jpeg_set_linear_quality(&cinfo, job.scale, TRUE);
    if (!gray) {
        const int32_t luminance = job.sampling == kJpegSampling422   ? 2
                                  : job.sampling == kJpegSampling411 ? 4
                                                                     : 1;
        cinfo.comp_info[0].h_samp_factor = luminance;
        for (int32_t c = 0; c < 3; ++c) {
            cinfo.comp_info[c].v_samp_factor = 1;
            if (c > 0) cinfo.comp_info[c].h_samp_factor = 1;
        }
    }
    cinfo.write_JFIF_header = TRUE;
    const int32_t dpi = RoundToInt(image.resolution);
    if (dpi >= 1 && dpi <= 65535) {
        cinfo.density_unit = 1;  // dots per inch
        cinfo.X_density = static_cast<UINT16>(dpi);
        cinfo.Y_density = static_cast<UINT16>(dpi);
    } else {
        cinfo.density_unit = 0;  // aspect ratio only
        cinfo.X_density = 1;
        cinfo.Y_density = 1;
    }

    jpeg_start_compress(&cinfo, TRUE);
    while (cinfo.next_scanline < cinfo.image_height) {
        // libjpeg only reads the rows it is given.
        JSAMPROW row = image.rows[image.height - 1 - static_cast<int32_t>(cinfo.next_scanline)];
        jpeg_write_scanlines(&cinfo, &row, 1);
        const int64_t percent = int64_t{cinfo.next_scanline} * 100 / image.height;
        if (ProgressStep(static_cast<int32_t>(percent)) != 0) {
            jpeg_destroy_compress(&cinfo);
            return kErrAborted;
        }
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    return kOk;
}

// ---------------------------------------------------------------------------
// The palette summary (described in jpeg.h)

inline constexpr int32_t kCells = 32 * 32 * 32;

struct PaletteHistogram {
    std::unique_ptr<uint32_t[]> counts;  // pixels a cell
    std::unique_ptr<uint64_t[]> sums;    // red, green, blue sums a cell
};

// Cell of a colour: red, green and blue in 5 bits each, red highest.
inline int32_t CellIndex(int32_t r, int32_t g, int32_t b) { return (r << 10) | (g << 5) | b; }

struct ColorBox {
    int32_t lo[3];  // red, green, blue cell bounds, inclusive
    int32_t hi[3];
    uint64_t count;
};

// Narrows a box to its occupied cells and counts its pixels. A box with no
// pixel keeps count 0.
void ShrinkBox(const PaletteHistogram& histogram, ColorBox& box)
{
    int32_t lo[3] = {31, 31, 31}, hi[3] = {0, 0, 0};
    uint64_t count = 0;
    for (int32_t r = box.lo[0]; r <= box.hi[0]; ++r)
        for (int32_t g = box.lo[1]; g <= box.hi[1]; ++g)
            for (int32_t b = box.lo[2]; b <= box.hi[2]; ++b) {
                const uint32_t n = histogram.counts[CellIndex(r, g, b)];
                if (n == 0) continue;
                count += n;
                const int32_t v[3] = {r, g, b};
                for (int32_t a = 0; a < 3; ++a) {
                    if (v[a] < lo[a]) lo[a] = v[a];
                    if (v[a] > hi[a]) hi[a] = v[a];
                }
            }
    box.count = count;
    if (count == 0) return;
    for (int32_t a = 0; a < 3; ++a) box.lo[a] = lo[a], box.hi[a] = hi[a];
}

// Cuts `box` in two across its longest side; `upper` gets the far part.
void SplitBox(const PaletteHistogram& histogram, ColorBox& box, ColorBox& upper)
{
    static constexpr int32_t kAxisOrder[3] = {1, 0, 2};  // green, red, blue
    int32_t axis = kAxisOrder[0];
    for (int32_t a : kAxisOrder)
        if (box.hi[a] - box.lo[a] > box.hi[axis] - box.lo[axis]) axis = a;

    uint64_t plane[32] = {};
    for (int32_t r = box.lo[0]; r <= box.hi[0]; ++r)
        for (int32_t g = box.lo[1]; g <= box.hi[1]; ++g)
            for (int32_t b = box.lo[2]; b <= box.hi[2]; ++b) {
                const int32_t v[3] = {r, g, b};
                plane[v[axis]] += histogram.counts[CellIndex(r, g, b)];
            }
    int32_t cut = box.lo[axis];
    uint64_t below = plane[cut];
    while (cut < box.hi[axis] - 1 && below * 2 < box.count) below += plane[++cut];

    upper = box;
    box.hi[axis] = cut;
    upper.lo[axis] = cut + 1;
    ShrinkBox(histogram, box);
    ShrinkBox(histogram, upper);
}

void BoxColor(const PaletteHistogram& histogram, const ColorBox& box, uint8_t* rgb)
{
    uint64_t sum[3] = {0, 0, 0};
    for (int32_t r = box.lo[0]; r <= box.hi[0]; ++r)
        for (int32_t g = box.lo[1]; g <= box.hi[1]; ++g)
            for (int32_t b = box.lo[2]; b <= box.hi[2]; ++b)
                for (int32_t a = 0; a < 3; ++a)
                    sum[a] += histogram.sums[CellIndex(r, g, b) * 3 + a];
    for (int32_t a = 0; a < 3; ++a)
        rgb[a] = static_cast<uint8_t>((sum[a] + box.count / 2) / box.count);
}

void PaletteSummary(const Image& image, const PaletteHistogram& histogram, uint8_t* palette)
{
    std::memset(palette, 0, 768);
    if (image.kind == kImageGray) {
        for (int32_t i = 0; i < 256; ++i) std::memset(palette + i * 3, i, 3);
        return;
    }
    std::memset(histogram.counts.get(), 0, sizeof(uint32_t) * kCells);
    std::memset(histogram.sums.get(), 0, sizeof(uint64_t) * kCells * 3);
    for (int32_t y = 0; y < image.height; ++y) {
        const uint8_t* p = image.rows[y];
        for (int32_t x = 0; x < image.width; ++x, p += 3) {
            const int32_t cell = CellIndex(p[2] >> 3, p[1] >> 3, p[0] >> 3);
            ++histogram.counts[cell];
            histogram.sums[cell * 3] += p[2];
            histogram.sums[cell * 3 + 1] += p[1];
            histogram.sums[cell * 3 + 2] += p[0];
        }
    }

    ColorBox boxes[256];
    boxes[0] = ColorBox{{0, 0, 0}, {31, 31, 31}, 0};
    ShrinkBox(histogram, boxes[0]);
    if (boxes[0].count == 0) return;
    int32_t boxCount = 1;
    while (boxCount < 256) {
        int32_t chosen = -1;
        for (int32_t i = 0; i < boxCount; ++i) {
            const ColorBox& box = boxes[i];
            const bool splittable =
                box.hi[0] > box.lo[0] || box.hi[1] > box.lo[1] || box.hi[2] > box.lo[2];
            if (splittable && (chosen < 0 || box.count > boxes[chosen].count)) chosen = i;
        }
        if (chosen < 0) break;
        SplitBox(histogram, boxes[chosen], boxes[boxCount]);
        ++boxCount;
    }
    for (int32_t i = 0; i < boxCount; ++i) BoxColor(histogram, boxes[i], palette + i * 3);
}

}  // namespace

bool LooksLikeJpeg(const uint8_t* bytes, size_t count)
{
    return bytes && count >= 3 && bytes[0] == 0xFF && bytes[1] == 0xD8 && bytes[2] == 0xFF;
}

int32_t JpegFactor(int32_t quality) { return (100 - quality) * 254 / 100 + 1; }

int32_t JpegScale(int32_t factor)
{
    if (factor < 1) factor = 1;
    if (factor > 255) factor = 255;
    int32_t quality = 100 - ((factor - 1) * 100 + 127) / 254;
    if (quality < 1) quality = 1;
    return quality < 50 ? 5000 / quality : 200 - quality * 2;
}

namespace {

int32_t ReadJpegFile(const std::string& path, Image& image, bool showBox, PictureInfo* info)
{
    int32_t result = kErrJpegRead;
    {
        File file;
        int64_t size = 0;
        uint8_t head[3] = {};
        int64_t count = sizeof head;
        if (FileOpenRead(path, file) != 0) return kErrJpegRead;
        errno = 0;
        if (FileSize(file, size) != 0) {
            SetErrorDetail(codec::SystemReason("cannot size the file"));
            return kErrJpegRead;
        }
        if (FileRead(file, count, head) != 0 || !LooksLikeJpeg(head, static_cast<size_t>(count))) {
            SetErrorDetail("not a JPEG file");
            return kErrJpegRead;
        }
        if (!codec::SeekTo(file, 0)) return kErrJpegRead;

        ReadJob job{};
        job.stream = file.stream;
        job.fileSize = size;
        job.image = &image;
        job.resolution = CurrentPreferences().defaultResolution;
        job.showBox = showBox;
        job.info = info;
        result = DecodeJpeg(job);
        if (job.boxOpen) ProgressClose();
    }
    if (result != kOk) ImageFree(image);
    return result;
}

}  // namespace

int32_t JPEGRead(const std::string& path, Image& image, bool showBox)
{
    return ReadJpegFile(path, image, showBox, nullptr);
}

int32_t JPEGReadHeader(const std::string& path, PictureInfo& info)
{
    Image unused;
    return ReadJpegFile(path, unused, false, &info);
}

int32_t JPEGWrite(const std::string& path, const Image& image, int32_t quality, int32_t sampling,
                  uint8_t* palette768, const PictureMetadata* metadata)
{
    if (image.kind != kImageGray && image.kind != kImageColor) {
        SetErrorDetail("JPEG holds only gray and colour pictures");
        return kErrJpegWrite;
    }
    if (!image.rows || image.width <= 0 || image.height <= 0) {
        SetErrorDetail("no picture to write");
        return kErrJpegWrite;
    }
    if (quality < 0) quality = 0;
    if (quality > 100) quality = 100;

    // The histogram of the palette summary is taken before the file is made,
    // so that a shortage of memory leaves the disk untouched.
    PaletteHistogram histogram;
    if (palette768 && image.kind == kImageColor) {
        histogram.counts.reset(new (std::nothrow) uint32_t[kCells]);
        histogram.sums.reset(new (std::nothrow) uint64_t[kCells * 3]);
        if (!histogram.counts || !histogram.sums) {
            SetErrorDetail("out of memory");
            return kErrOutOfMemory;
        }
    }

    SafeWrite write;
    if (SafeWriteOpen(write, path) != kOk) return kErrJpegWrite;
    const MetadataWrite withMetadata{metadata, image.width, image.height};
    MetadataWriteInto(write, withMetadata);
    WriteJob job{};
    job.stream = write.file.stream;
    job.image = &image;
    job.scale = JpegScale(JpegFactor(quality));
    job.sampling = sampling;
    ProgressOpen(0, 100, "File Save (JPEG)", true);
    int32_t result = EncodeJpeg(job);
    ProgressClose();
    if (result != kOk) return result;  // the temporary goes with `write`
    if (SafeWriteCommit(write) != kOk) return kErrJpegWrite;
    if (palette768) PaletteSummary(image, histogram, palette768);
    return kOk;
}

std::string JpegVersion()
{
#define LV_JPEG_TEXT_(x) #x
#define LV_JPEG_TEXT(x) LV_JPEG_TEXT_(x)
#ifdef LIBJPEG_TURBO_VERSION
    return "libjpeg-turbo " LV_JPEG_TEXT(LIBJPEG_TURBO_VERSION);
#else
    return "libjpeg " + std::to_string(JPEG_LIB_VERSION);
#endif
#undef LV_JPEG_TEXT
#undef LV_JPEG_TEXT_
}

}  // namespace lv
