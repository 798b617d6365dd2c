// What a camera file says besides its pixels: the EXIF (with the
// orientation the camera was held in), XMP and IPTC, and the embedded ICC
// profile. Read when a picture is opened, written again into the JPEG, TIFF
// and PNG files saved from it, with the orientation set back to normal (the
// pixels have been turned instead) and the pixel size made the picture's.
// exiv2 does the parsing and the writing; nothing of it shows here.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "image/image.h"

namespace lv {

// The file's metadata blocks, kept whole for writing them again.
struct MetadataBlocks;

struct PictureMetadata {
    // The EXIF orientation, 1 (as stored) to 8; 1 when the file has none.
    int32_t orientation = 1;
    std::string camera;       // "Canon PowerShot A640", make and model
    std::string taken;        // "2008:03:16 19:44:42", the original date
    std::string exposure;     // "1/60 s, f/2.8, ISO 100", what the file gives of it
    std::string profileName;  // the ICC profile's own description, "sRGB IEC61966-2.1"
    std::shared_ptr<const MetadataBlocks> blocks;  // null when the file has none

    bool Empty() const { return !blocks; }
};

// Reads the metadata of a JPEG, TIFF or PNG file. A file without any, of
// another format, or whose metadata cannot be parsed gives an empty record
// and 0: metadata never stops a picture from opening.
int32_t MetadataRead(const std::string& path, PictureMetadata& metadata);

// Turns a picture as its EXIF orientation says the camera was held, so that
// it stands as it was taken (2 to 8; 1 and anything else leave it alone).
// 0, 1 when memory is short (the picture is then left as it was).
int32_t ApplyOrientation(Image& image, int32_t orientation);

// Puts the metadata into the complete JPEG, TIFF or PNG file at `path`,
// rewritten in place (the same file, so that an open handle on it stays
// good), with the orientation 1 and the pixel size `width` by `height`:
// EXIF, XMP and the ICC profile in all three, IPTC where the format has a
// place for it. 0, or 1 when memory is short; a failure of the library
// leaves the file as it was and gives 0 with the reason in ErrorDetail(),
// since a picture is worth saving without its metadata.
int32_t MetadataInsert(const std::string& path, const PictureMetadata& metadata, int32_t width,
                       int32_t height);

// The metadata as fields of a TIFF file, which the TIFF writer sets among
// its own, so that a TIFF costs nothing to rewrite: the camera's texts as
// the baseline tags, the rest of the EXIF (exposure, dates, GPS) made XMP
// together with the file's own XMP, the ICC profile, and the IPTC block
// padded to whole 32-bit words. Empty texts and blocks are not set.
struct TiffMetadataTags {
    std::string make, model, dateTime, artist, copyright, software, description;
    std::string xmp;
    std::vector<uint8_t> icc, iptc;
};
// False when there is nothing to set; 1 when memory is short is reported
// as false too, and the file is written without its metadata.
bool MetadataTiffTags(const PictureMetadata& metadata, TiffMetadataTags& tags);

// A writer's hook: set on its SafeWrite, the metadata goes into the
// complete file before it replaces the old one. `metadata` null or empty
// leaves the write as it is. The record must outlive the write.
struct MetadataWrite {
    const PictureMetadata* metadata = nullptr;
    int32_t width = 0, height = 0;
};
void MetadataWriteInto(struct SafeWrite& write, const MetadataWrite& what);

// The switch of the preferences and of `--no-orient`: whether pictures are
// turned by their EXIF orientation when opened. On by default.
bool OrientOnOpen();
void SetOrientOnOpen(bool on);

}  // namespace lv
