// Error codes and their texts. Every fallible engine call returns 0 or one of
// these codes; only the command that started the work shows it, through
// ReportError.
#pragma once

#include <cstdint>
#include <string>

namespace lv {

// The codes that engine code names directly. The full table of texts is in
// errors.cpp; any code 0..95 is valid.
enum ErrorCode : int32_t {
    kOk = 0,
    kErrOutOfMemory = 1,
    kErrEndOfFile = 2,
    kErrCannotCreate = 3,
    kErrCannotOpen = 4,
    kErrReading = 5,
    kErrWriting = 6,
    kErrGetPosition = 7,
    kErrSetPosition = 8,
    kErrClosing = 9,
    kErrChangeDirectory = 10,
    kErrAborted = 11,
    kErrFileHeader = 12,
    kErrTooManyImages = 13,
    kErrImageType = 14,
    kErrColorLineFile = 15,
    kErrCurveFile = 16,
    kErrCalibrationFile = 17,
    kErrColorBalanceFile = 31,
    kErrWindowInUse = 36,
    kErrReadOnlyDisk = 37,
    kErrDeleting = 38,
    kErrColorCurveFile = 42,
    kErrInputGamma = 43,   // "Illegal input gamma value"
    kErrOutputGamma = 44,  // "Illegal output gamma value"
    kErrUnknownFileType = 71,
    kErrPerspective = 80,  // "Cannot compute perspective transformation"
    kErrImageTooSmall = 81,
    kErrToolOnPreview = 82,
    kErrTempDirectory = 88,
    kErrColorRegistrationFile = 87,
    kErrLayoutFile = 95,
};

inline constexpr int32_t kErrorTableSize = 96;

// The text of a code; "Unrecognized Error" outside 0..95, "" for the spare
// codes 46, 63, 68, 84 and 85.
const char* ErrorText(int32_t code);

// The caption a code is shown under: "Attention" for the user's abort (11),
// "Error" for everything else.
const char* ErrorCaption(int32_t code);

// The particulars of the last failure on this thread, kept beside its code
// for the command line: a codec's reason ("header claims 100000 x 100000
// pixels", "truncated strip") or the system's ("No such file or directory").
// The editor shows only the code's text. A failing call sets it where the
// reason is known; a command clears it before its work starts.
void SetErrorDetail(std::string detail);
const std::string& ErrorDetail();
void ClearErrorDetail();

// Shows the code's text through the installed front end (see frontend.h).
// Does nothing for 0.
void ReportError(int32_t code);

}  // namespace lv
