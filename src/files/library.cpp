#include "files/library.h"

#include <cstring>

#include "files/codec_io.h"
#include "files/jpeg.h"
#include "shell/errors.h"

namespace lv {

namespace {

constexpr size_t kProbeBytes = 32;

bool StartsWith(const uint8_t* bytes, size_t count, const char* magic, size_t length)
{
    return count >= length && std::memcmp(bytes, magic, length) == 0;
}

// The format by the file's first bytes; Targa, which has no signature, only
// by its name.
int32_t FormatOfBytes(const uint8_t* bytes, size_t count, const std::string& path)
{
    // Classic TIFF, and BigTIFF ("+" for 43), which libtiff reads alike.
    if (StartsWith(bytes, count, "II*\0", 4) || StartsWith(bytes, count, "MM\0*", 4) ||
        StartsWith(bytes, count, "II+\0", 4) || StartsWith(bytes, count, "MM\0+", 4))
        return kFormatTiff;
    if (StartsWith(bytes, count, "\x89PNG\r\n\x1a\n", 8)) return kFormatPng;
    if (StartsWith(bytes, count, "GIF87a", 6) || StartsWith(bytes, count, "GIF89a", 6))
        return kFormatGif;
    if (StartsWith(bytes, count, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8)) return kFormatFlashPix;
    if (LooksLikeBmp(bytes, count)) return kFormatBmp;
    if (LooksLikePcx(bytes, count)) return kFormatPcx;
    if (!ExtensionDiffers(path, "tga") && LooksLikeTarga(bytes, count)) return kFormatTarga;
    return -1;
}

}  // namespace

int32_t LibraryDetectFormat(const std::string& path)
{
    File file;
    if (FileOpenRead(path, file)) return -1;
    uint8_t bytes[kProbeBytes] = {};
    int64_t count = kProbeBytes;
    const int32_t read = FileRead(file, count, bytes);
    if (read != kOk && read != kErrEndOfFile) return -1;
    return FormatOfBytes(bytes, static_cast<size_t>(count), path);
}

int32_t LibraryRead(File& file, int32_t format, LibraryRowCallback rowCallback, void* context,
                    LibraryHeaderCallback headerCallback)
{
    if (!file.stream) return codec::Refuse("no open file");
    if (format == 0) {
        // Found out from the first bytes; only Targa, without a signature,
        // cannot be found out this way and must be named.
        uint8_t bytes[kProbeBytes] = {};
        int64_t count = kProbeBytes;
        const int32_t read = FileRead(file, count, bytes);
        if ((read != kOk && read != kErrEndOfFile) || FileSeek(file, 0))
            return codec::Refuse(codec::SystemReason("cannot read the file"));
        format = FormatOfBytes(bytes, static_cast<size_t>(count), std::string());
    }
    const LibraryReader reader{headerCallback, rowCallback, context};
    switch (format) {
    case kFormatTiff: return TiffRead(file, reader);
    case kFormatBmp: return BmpRead(file, reader);
    case kFormatPcx: return PcxRead(file, reader);
    case kFormatTarga: return TargaRead(file, reader);
    case kFormatGif: return GifRead(file, reader);
    case kFormatPng: return PngRead(file, reader);
    case kFormatFlashPix: return codec::Refuse("no reader for FlashPix files");
    default: return codec::Refuse("not a picture file of a known format");
    }
}

int32_t LibraryWrite(File& file, const LibraryHeader& header, int32_t format,
                     LibraryWriteCallback rowCallback, void* context)
{
    if (!file.stream) return codec::Refuse("no open file");
    const LibraryWriter writer{&header, rowCallback, context};
    switch (format) {
    case kFormatTiff: return TiffWrite(file, writer);
    case kFormatBmp: return BmpWrite(file, writer);
    case kFormatPcx: return PcxWrite(file, writer);
    case kFormatTarga: return TargaWrite(file, writer);
    case kFormatGif: return GifWrite(file, writer);
    case kFormatEps: return EpsWrite(file, writer);
    case kFormatPng: return PngWrite(file, writer);
    default: return codec::Refuse("no writer for this format");
    }
}

std::string LibraryVersions()
{
    return TiffVersion() + ", " + PngVersion() + ", " + GifVersion() + ", " + JpegVersion();
}

}  // namespace lv
