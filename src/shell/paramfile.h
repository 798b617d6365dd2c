// Keyword parameter files: plain text, one statement to a line, opened by a
// line with the format's name and "1.0" ("Curve 1.0", "Layout 1.0", ...).
// Each format's keywords belong to the module that owns it; this is the
// shared reader and writer.
//
// Reading a curve file:
//
//     ParamReader reader;
//     if (int32_t code = ParamReadOpen(reader, path, "Curve", kErrCurveFile)) return code;
//     std::vector<std::string> tokens;
//     while (ParamReadLine(reader, tokens) == kOk) {
//         if (tokens[0] == "npts" && tokens.size() == 2) ... else if (tokens[0] == "end") ...
//     }
//
// Writing one:
//
//     ParamWriter writer;
//     if (int32_t code = ParamWriteOpen(writer, path, "Curve")) return code;
//     ParamWrite(writer, "npts %d", count);
//     ParamWrite(writer, "point %d %d %d", i, x, y);
//     ParamWrite(writer, "end");
//     return ParamWriteCommit(writer);
//
// The writer fills a temporary file beside the target and only a successful
// commit puts it in the target's place, so a failed or abandoned write never
// leaves a half-written file and the old file stays as it was.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "shell/safe_write.h"
#include "shell/text.h"

namespace lv {

// The longest header line read; a longer one cannot be a header.
inline constexpr int32_t kParamHeaderLimit = 255;
// The longest statement line read; the rest of a longer one comes as the
// next statement.
inline constexpr int32_t kParamLineLimit = 1024;

struct ParamReader {
    File file;
    std::string line;
};

// Opens the file and checks that its first line is exactly two tokens, `kind`
// and "1.0". Returns 0; 4 when the file cannot be opened; 5 on a read
// failure; `formatError` (the format's own code, such as kErrCurveFile) for
// an empty file or any other first line.
int32_t ParamReadOpen(ParamReader& reader, const std::string& path, std::string_view kind,
                      int32_t formatError);

// Reads the next statement as tokens (never an empty list: lines without
// tokens are skipped). Returns 0; 2 at the end of the file; 5 on a read
// failure.
int32_t ParamReadLine(ParamReader& reader, std::vector<std::string>& tokens);

// A parameter file is written as every file is: beside its target, and in
// its place only when complete (shell/safe_write.h).
struct ParamWriter {
    SafeWrite write;     // removes the temporary file unless committed
    int32_t error = 0;  // the first failure, reported by the commit
};

// Starts a file: creates the temporary file beside `path` and writes the
// header "<kind> 1.0". Returns 0, or 37 (access denied) or 3 (any other
// failure to create).
int32_t ParamWriteOpen(ParamWriter& writer, const std::string& path, std::string_view kind);

// Writes one statement line, ended by CR LF. Returns 0 or 6; after a failure
// every further write is skipped and the commit reports it.
int32_t ParamWriteText(ParamWriter& writer, std::string_view text);

// Formats one statement with FormatText and writes it.
template <class... A>
int32_t ParamWrite(ParamWriter& writer, std::string_view format, const A&... args)
{
    return ParamWriteText(writer, FormatText(format, args...));
}

// Finishes the file and puts it in place of the target. Returns 0, the first
// write failure (6), or the failure to replace the target (37 or 3). On any
// failure the temporary file is removed and the target is untouched.
int32_t ParamWriteCommit(ParamWriter& writer);

}  // namespace lv
