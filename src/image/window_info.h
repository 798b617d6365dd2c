// The fields of the Window Info box, as text.
#pragma once

#include <string>

#include "image/window.h"

namespace lv {

struct WindowInfoText {
    std::string type, memory, pixels, printSize, resolution, fileName, fileFormat, fileDate;
};

// The fields for a window's record, or "N/A" in every field for none. The
// file date is read from the file's last write, in local time, for the file
// types that show one.
WindowInfoText WindowInfoFor(const ImageWindow* record);

// The name Window Info gives a file type, and whether it shows the date.
const char* FileFormatName(int32_t fileType, bool* showsDate);

}  // namespace lv
