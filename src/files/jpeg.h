// JPEG files, read and written through libjpeg-turbo.
//
// JPEG does not go through the image file library: it has its own reader and
// writer here, its own Save dialog settings (quality and colour sampling) and
// its own error codes (22 when a file cannot be read, 23 when one cannot be
// written). A file is taken as JPEG by its contents as well as its name, since
// slide files are JPEGs under other names.
//
// Reading. Single-component (8-bit gray) files give a gray image (kind 2);
// every other file a colour image (kind 3): YCbCr and RGB through libjpeg's
// own conversion, CMYK and YCCK by our conversion below. The picture's top
// row lands in the image's last row (row 0 is the bottom). The resolution is
// always the preference `defaultResolution`: the file's own density is not
// read. Progressive, arithmetic-coded and restart-marked files are read;
// 12-bit files are refused with 22.
//
// Writing. Kinds 2 and 3 only. Baseline Huffman coding with libjpeg's
// standard tables, a JFIF header carrying the image's resolution in dots per
// inch, and the colour sampling chosen in the Save dialog. The Huffman tables
// are not optimised, so memory stays at the image plus a strip of rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "image/image.h"

namespace lv {

// Colour sampling of a written colour file, as listed in the Save dialog:
// "4:4:4", "4:2:2" (luminance sampled 2 by 1), "4:1:1" (4 by 1). Any other
// value writes 4:4:4. Gray files have one component and ignore it.
enum JpegSampling : int32_t {
    kJpegSampling444 = 0,
    kJpegSampling422 = 1,
    kJpegSampling411 = 2,
};

// True when the bytes start with a JPEG start-of-image marker and the next
// marker's lead byte: FF D8 FF.
bool LooksLikeJpeg(const uint8_t* bytes, size_t count);

// Reads a JPEG file into `image` (freed first by the allocation). With
// `showBox` the box "File Open (JPEG)" runs from 0 to 100, the percent done,
// and its Cancel stops the read between rows. Results: 0; 1 when memory is
// short or the picture does not fit in memory; 11 when aborted; 22 when the
// file cannot be opened, is not a JPEG, is damaged or truncated, or has rows
// too wide for the image record. On failure
// `image` is left empty and ErrorDetail() holds the reason: the system's for
// a file that cannot be opened, else libjpeg's message or ours ("header
// rows of 30000 pixels are too wide").
//
// No size is refused for its own sake: a picture is refused only when its
// rows do not fit a block of the image record (22) or it does not fit in
// memory (1, before anything is allocated); a flat page of many pixels in a
// few hundred bytes opens.
//
// A file that ends before its picture does is refused rather than shown with
// a gray remainder ("premature end of JPEG file"): one cut inside a scan, or
// a multi-scan file cut between scans before each component, and each
// progressive coefficient, had all its data. A file that is complete but for
// its end marker is read. Arithmetic-coded files give no sign of where their
// data ran out and must be whole. Other damage that libjpeg can step over
// (stray bytes between markers, a corrupt entropy segment) is read as
// libjpeg decodes it.
int32_t JPEGRead(const std::string& path, Image& image, bool showBox);

// Writes a gray or colour image to `path` (the file is created or emptied
// there; the caller handles temporary names). `quality` is 0..100 (clamped),
// `sampling` one of JpegSampling. The box "File Save (JPEG)" runs from 0 to
// 100, the percent of rows written, and can be cancelled. Results: 0; 1 when
// memory is short; 11 when aborted; 23 for another kind of image or any
// write failure, the file not created included, with the reason in
// ErrorDetail(). On any failure the partial file is deleted.
//
// On success with `palette768` not null, a 256-entry summary of the picture's
// colours is stored there as red, green, blue triples (the Slide Show builds
// its screen palette from it):
// - gray pictures: entry i is the gray level i;
// - colour pictures: median cut over a 5-5-5 histogram of every pixel. One
//   box first spans the occupied histogram cells; then, until there are 256
//   boxes or none can be split, the box holding the most pixels (the first
//   one on a tie) among those spanning more than one cell is cut across its
//   longest side (ties: green, then red, then blue) after the cell where its
//   pixel count first reaches half, and both halves shrink to their occupied
//   cells. Entry n is the mean colour of the pixels in box n, rounded; boxes
//   keep the order in which they were made, and unused entries are black.
//   A picture of at most 256 colours that differ in their top 5 bits of some
//   channel therefore gets exactly its colours. Deterministic.
// The kind, size and resolution a JPEG file gives its picture, read from its
// header alone: 0, or 22 with the reason.
int32_t JPEGReadHeader(const std::string& path, PictureInfo& info);

int32_t JPEGWrite(const std::string& path, const Image& image, int32_t quality, int32_t sampling,
                  uint8_t* palette768, const struct PictureMetadata* metadata = nullptr);

// The quantisation factor of a quality: (100 - quality) * 254 / 100 + 1, in
// integer arithmetic; 1 for quality 100, 255 for 0.
int32_t JpegFactor(int32_t quality);

// How a factor scales libjpeg's standard quantisation tables, in percent: the
// factor is turned back into the quality q it stands for, q = 100 -
// ((factor - 1) * 100 + 127) / 254 (exact for every quality), and q goes
// through libjpeg's own quality curve: 200 - 2q from 50 up, 5000 / q below
// (q 0 counts as 1). So factor 1 gives scale 0, that is all-ones tables,
// factor 128 (quality 50) the standard tables, and factor 255 scale 5000,
// every entry clamped to 255; larger factors never give finer tables.
int32_t JpegScale(int32_t factor);

// The codec behind this module, for the About box: "libjpeg-turbo 2.1.5".
std::string JpegVersion();

}  // namespace lv
