#include "image/window_info.h"

#include <sys/stat.h>

#include <ctime>

#include "shell/text.h"

namespace lv {

namespace {

constexpr const char* kNotAvailable = "N/A";
constexpr const char* kMonths[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::string FileDate(const std::string& path)
{
    struct stat info;
    if (path.empty() || ::stat(path.c_str(), &info) != 0) return kNotAvailable;
    std::tm local{};
    const std::time_t written = info.st_mtime;
    if (!localtime_r(&written, &local)) return kNotAvailable;
    return FormatText("%d-%s-%d %2d:%2d", local.tm_mday, kMonths[local.tm_mon],
                      local.tm_year + 1900, local.tm_hour, local.tm_min);
}

}  // namespace

const char* FileFormatName(int32_t fileType, bool* showsDate)
{
    bool date = true;
    const char* name = kNotAvailable;
    switch (fileType) {
    case 2: name = "TIFF"; break;
    case 3: name = "JPEG"; break;
    case 4: name = "BMP"; break;
    case 5: name = "Targa"; break;
    case 6: name = "PCX"; break;
    case 7: name = "GIF"; break;
    case 11: name = "PNG"; break;
    case 8:
    case 9:
    case 10:
        name = "Photo CD";
        date = false;
        break;
    case -1:
        name = "PhotoCD";
        date = false;
        break;
    default: date = false; break;
    }
    if (showsDate) *showsDate = date;
    return name;
}

WindowInfoText WindowInfoFor(const ImageWindow* record)
{
    WindowInfoText t;
    t.type = t.memory = t.pixels = t.printSize = t.resolution = t.fileName = t.fileFormat =
        t.fileDate = kNotAvailable;
    if (!record) return t;
    const Image& image = record->image;
    t.type = ImageKindName(image.kind);
    const bool picture = image.kind >= kImageBinary && image.kind <= kImageColor;
    if (picture) t.memory = FormatText("%, bytes", int64_t{image.height} * image.stride);
    t.pixels = FormatText("%, x %, pixels", image.width, image.height);
    if (image.resolution > 0.0) {
        t.printSize = FormatText("%2f x %2f inches", image.width / image.resolution,
                                 image.height / image.resolution);
        t.resolution = FormatText("%2f dpi", image.resolution);
    }
    t.fileName = record->fileName;
    bool showsDate = false;
    t.fileFormat = FileFormatName(record->fileType, &showsDate);
    if (showsDate) t.fileDate = FileDate(record->fileName);
    return t;
}

}  // namespace lv
