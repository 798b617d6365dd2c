#include "files/metadata.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <vector>

#include "geometry/mirror_rotate.h"
#include "shell/errors.h"
#include "shell/safe_write.h"

// exiv2 0.27 still names std::auto_ptr in its interface; its warnings are
// the library's, not ours. It reports failures by exceptions, which stop
// at the functions of this file.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <exiv2/exiv2.hpp>

namespace lv {

struct MetadataBlocks {
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    std::vector<uint8_t> icc;
};

namespace {

std::atomic<bool> gOrientOnOpen{true};

// The EXIF tags that describe the photograph, not the layout of the file's
// pixels: what a TIFF, whose own first directory is its EXIF, takes over
// from another file.
bool CameraTag(const Exiv2::Exifdatum& d)
{
    static const char* const kImageTags[] = {"Exif.Image.Make",
                                             "Exif.Image.Model",
                                             "Exif.Image.DateTime",
                                             "Exif.Image.Artist",
                                             "Exif.Image.Copyright",
                                             "Exif.Image.Software",
                                             "Exif.Image.ImageDescription"};
    if (d.groupName() == "Photo" || d.groupName() == "GPSInfo") return true;
    for (const char* key : kImageTags)
        if (d.key() == key) return true;
    return false;
}

std::string Text(const Exiv2::ExifData& exif, const char* key)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    if (found == exif.end()) return "";
    std::string text = found->print(&exif);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
    return text;
}

// "1/60 s, f/2.8, ISO 100" from what the file has of the three.
std::string Exposure(const Exiv2::ExifData& exif)
{
    std::string out;
    auto add = [&out](const std::string& part) {
        if (part.empty()) return;
        if (!out.empty()) out += ", ";
        out += part;
    };
    add(Text(exif, "Exif.Photo.ExposureTime"));
    add(Text(exif, "Exif.Photo.FNumber"));
    const std::string iso = Text(exif, "Exif.Photo.ISOSpeedRatings");
    if (!iso.empty()) add("ISO " + iso);
    return out;
}

// The description of an ICC profile: its 'desc' tag, an ASCII text in the
// version 2 layout or the first record of a version 4 'mluc'.
std::string ProfileName(const std::vector<uint8_t>& icc)
{
    auto u32 = [&icc](size_t at) {
        return at + 4 <= icc.size() ? uint32_t{icc[at]} << 24 | uint32_t{icc[at + 1]} << 16 |
                                          uint32_t{icc[at + 2]} << 8 | icc[at + 3]
                                    : 0u;
    };
    const uint32_t tags = u32(128);
    for (uint32_t i = 0; i < tags && i < 1000; ++i) {
        const size_t entry = 132 + size_t{i} * 12;
        if (u32(entry) != 0x64657363) continue;  // 'desc'
        const size_t at = u32(entry + 4), size = u32(entry + 8);
        if (at + size > icc.size() || size < 12) return "";
        std::string name;
        if (u32(at) == 0x64657363) {  // 'desc': a count, then ASCII
            const size_t count = u32(at + 8);
            for (size_t k = 0; k < count && at + 12 + k < at + size; ++k) {
                const char c = static_cast<char>(icc[at + 12 + k]);
                if (c == '\0') break;
                name += c;
            }
        } else if (u32(at) == 0x6D6C7563 && size >= 28) {  // 'mluc': UTF-16BE records
            const size_t length = u32(at + 20), offset = u32(at + 24);
            for (size_t k = 0; k + 1 < length && at + offset + k + 1 < at + size; k += 2) {
                const uint32_t c = uint32_t{icc[at + offset + k]} << 8 | icc[at + offset + k + 1];
                name += c < 128 ? static_cast<char>(c) : '?';
            }
        }
        return name;
    }
    return "";
}

}  // namespace

bool OrientOnOpen() { return gOrientOnOpen; }
void SetOrientOnOpen(bool on) { gOrientOnOpen = on; }

int32_t MetadataRead(const std::string& path, PictureMetadata& metadata)
{
    metadata = PictureMetadata();
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);  // its reasons are not the user's business
    try {
        Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(path, false);
        if (!image.get()) return kOk;
        const int type = image->imageType();
        if (type != Exiv2::ImageType::jpeg && type != Exiv2::ImageType::tiff &&
            type != Exiv2::ImageType::png)
            return kOk;
        image->readMetadata();
        auto blocks = std::make_shared<MetadataBlocks>();
        blocks->exif = image->exifData();
        blocks->iptc = image->iptcData();
        blocks->xmp = image->xmpData();
        if (image->iccProfileDefined()) {
            const Exiv2::DataBuf* icc = image->iccProfile();
            blocks->icc.assign(icc->pData_, icc->pData_ + icc->size_);
        }
        if (type == Exiv2::ImageType::tiff) {
            // A TIFF's EXIF block is its own first directory: only the
            // camera's tags travel, not the layout of the old pixels.
            Exiv2::ExifData kept;
            for (const Exiv2::Exifdatum& d : blocks->exif)
                if (CameraTag(d) || d.key() == "Exif.Image.Orientation") kept.add(d);
            blocks->exif = kept;
        }
        // A TIFF written here keeps the photographic EXIF in its XMP: it is
        // EXIF again for what is shown and for the files made from it.
        bool photo = false;
        for (const Exiv2::Exifdatum& d : blocks->exif)
            if (d.groupName() == "Photo") photo = true;
        if (!photo && !blocks->xmp.empty()) {
            Exiv2::ExifData fromXmp;
            Exiv2::copyXmpToExif(blocks->xmp, fromXmp);
            for (const Exiv2::Exifdatum& d : fromXmp)
                if (CameraTag(d) &&
                    blocks->exif.findKey(Exiv2::ExifKey(d.key())) == blocks->exif.end())
                    blocks->exif.add(d);
        }
        const Exiv2::ExifData& exif = blocks->exif;
        const auto orientation = exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
        if (orientation != exif.end() && orientation->count() > 0) {
            const long value = orientation->toLong();
            if (value >= 1 && value <= 8) metadata.orientation = static_cast<int32_t>(value);
        }
        std::string make = Text(exif, "Exif.Image.Make"), model = Text(exif, "Exif.Image.Model");
        // Models often repeat their maker's name.
        metadata.camera = model.rfind(make, 0) == 0 || make.empty() ? model
                          : model.empty()                           ? make
                                                                    : make + " " + model;
        metadata.taken = Text(exif, "Exif.Photo.DateTimeOriginal");
        if (metadata.taken.empty()) metadata.taken = Text(exif, "Exif.Image.DateTime");
        metadata.exposure = Exposure(exif);
        metadata.profileName = ProfileName(blocks->icc);
        // An orientation alone says nothing once the picture stands: such a
        // file has no metadata worth carrying.
        bool describes = !blocks->iptc.empty() || !blocks->xmp.empty() || !blocks->icc.empty();
        for (const Exiv2::Exifdatum& d : blocks->exif)
            if (d.key() != "Exif.Image.Orientation") describes = true;
        if (describes) metadata.blocks = std::move(blocks);
    } catch (const std::bad_alloc&) {
        metadata = PictureMetadata();
        return kErrOutOfMemory;
    } catch (...) {
        // Damaged or unknown metadata: the picture opens without it.
        metadata = PictureMetadata();
    }
    return kOk;
}

int32_t ApplyOrientation(Image& image, int32_t orientation)
{
    // EXIF's orientations and the turns that make the picture stand.
    static const int32_t kTurn[9] = {0,
                                     kOrientCopy,
                                     kOrientLeftRight,
                                     kOrientHalfTurn,
                                     kOrientTopBottom,
                                     kOrientFallingDiagonal,
                                     kOrientClockwise,
                                     kOrientRisingDiagonal,
                                     kOrientCounterClockwise};
    if (orientation < 2 || orientation > 8 || !image.rows) return kOk;
    Image turned;
    if (int32_t code = mirror_rotate(image, turned, kTurn[orientation], false)) return code;
    image = std::move(turned);
    return kOk;
}

int32_t MetadataInsert(const std::string& path, const PictureMetadata& metadata, int32_t width,
                       int32_t height)
{
    if (!metadata.blocks) return kOk;
    const MetadataBlocks& blocks = *metadata.blocks;
    try {
        Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(path, false);
        if (!image.get()) return kOk;
        const int type = image->imageType();
        image->readMetadata();  // what our own writer put there (a TIFF's layout tags)
        Exiv2::ExifData exif = type == Exiv2::ImageType::tiff ? image->exifData() : blocks.exif;
        if (type == Exiv2::ImageType::tiff)
            for (const Exiv2::Exifdatum& d : blocks.exif)
                if (CameraTag(d)) exif[d.key()] = d.value();
        if (!exif.empty()) {
            exif["Exif.Image.Orientation"] = uint16_t{1};
            if (type != Exiv2::ImageType::tiff) {
                exif["Exif.Photo.PixelXDimension"] = static_cast<uint32_t>(width);
                exif["Exif.Photo.PixelYDimension"] = static_cast<uint32_t>(height);
                // A thumbnail of the old pixels would show the old turn.
                Exiv2::ExifThumb thumb(exif);
                thumb.erase();
            }
        }
        image->setExifData(exif);
        if (type != Exiv2::ImageType::png) image->setIptcData(blocks.iptc);
        Exiv2::XmpData xmp = blocks.xmp;
        if (!xmp.empty()) {
            const auto tiffOrientation = xmp.findKey(Exiv2::XmpKey("Xmp.tiff.Orientation"));
            if (tiffOrientation != xmp.end()) xmp.erase(tiffOrientation);
        }
        image->setXmpData(xmp);
        if (!blocks.icc.empty()) {
            Exiv2::DataBuf icc(blocks.icc.data(), static_cast<long>(blocks.icc.size()));
            image->setIccProfile(icc, false);
        }
        // The new file is made in memory and written over the old one's
        // bytes, in the same file.
        image->writeMetadata();
    } catch (const std::bad_alloc&) {
        return kErrOutOfMemory;
    } catch (const std::exception& e) {
        SetErrorDetail(std::string("the metadata could not be written: ") + e.what());
    } catch (...) {
        SetErrorDetail("the metadata could not be written");
    }
    return kOk;
}

bool MetadataTiffTags(const PictureMetadata& metadata, TiffMetadataTags& tags)
{
    tags = TiffMetadataTags();
    if (!metadata.blocks) return false;
    const MetadataBlocks& blocks = *metadata.blocks;
    try {
        const Exiv2::ExifData& exif = blocks.exif;
        tags.make = Text(exif, "Exif.Image.Make");
        tags.model = Text(exif, "Exif.Image.Model");
        tags.dateTime = Text(exif, "Exif.Image.DateTime");
        tags.artist = Text(exif, "Exif.Image.Artist");
        tags.copyright = Text(exif, "Exif.Image.Copyright");
        tags.software = Text(exif, "Exif.Image.Software");
        tags.description = Text(exif, "Exif.Image.ImageDescription");
        // The photograph's tags as XMP; none of the old file's layout, nor
        // its orientation, now that the pixels stand.
        Exiv2::ExifData photographic;
        for (const Exiv2::Exifdatum& d : exif)
            if (d.groupName() == "Photo" || d.groupName() == "GPSInfo") photographic.add(d);
        Exiv2::XmpData xmp = blocks.xmp;
        Exiv2::copyExifToXmp(photographic, xmp);
        for (const char* key :
             {"Xmp.tiff.Orientation", "Xmp.exif.PixelXDimension", "Xmp.exif.PixelYDimension"}) {
            const auto found = xmp.findKey(Exiv2::XmpKey(key));
            if (found != xmp.end()) xmp.erase(found);
        }
        if (!xmp.empty() && Exiv2::XmpParser::encode(tags.xmp, xmp) != 0) tags.xmp.clear();
        tags.icc = blocks.icc;
        if (!blocks.iptc.empty()) {
            const Exiv2::DataBuf iptc = Exiv2::IptcParser::encode(blocks.iptc);
            tags.iptc.assign(iptc.pData_, iptc.pData_ + iptc.size_);
            tags.iptc.resize((tags.iptc.size() + 3) / 4 * 4, 0);
        }
    } catch (...) {
        tags = TiffMetadataTags();
        return false;
    }
    return !tags.make.empty() || !tags.model.empty() || !tags.dateTime.empty() ||
           !tags.artist.empty() || !tags.copyright.empty() || !tags.software.empty() ||
           !tags.description.empty() || !tags.xmp.empty() || !tags.icc.empty() ||
           !tags.iptc.empty();
}

void MetadataWriteInto(SafeWrite& write, const MetadataWrite& what)
{
    if (!what.metadata || what.metadata->Empty()) return;
    write.rewrite = [](const std::string& temporary, const void* context) {
        const auto& w = *static_cast<const MetadataWrite*>(context);
        return MetadataInsert(temporary, *w.metadata, w.width, w.height);
    };
    write.rewriteContext = &what;
}

}  // namespace lv

#pragma GCC diagnostic pop
