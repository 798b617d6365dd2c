// The program's small text layer: file handles with a line reader and
// writer, path helpers, string helpers, the tokenizer, the number parsers and
// the formatter. Every parameter file, every stored setting and every number
// on a label goes through it.
//
// All fallible calls return 0 or a code of errors.h and never throw.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace lv {

// ---------------------------------------------------------------------------
// Files

// An open file; closes itself when it goes out of scope. Empty (stream null)
// when nothing is open. Movable, not copyable.
struct File {
    std::FILE* stream = nullptr;

    File() = default;
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
};

// Opens an existing regular file for reading. 4 when it cannot be opened,
// and at once for a folder, a named pipe or a device, with the reason. A
// file already open in `file` is closed first.
int32_t FileOpenRead(const std::string& path, File& file);
// 4, with the reason, when `path` names something other than a regular file
// (a folder, a pipe, a device); 0 when it is one or does not exist.
int32_t FileCheckRegular(const std::string& path);
// Creates (or empties) a file for writing. 37 when access is denied or the
// file system is read-only, otherwise 3.
int32_t FileCreate(const std::string& path, File& file);
// 38 when the file cannot be deleted (including when it does not exist).
int32_t FileDelete(const std::string& path);
// True when `path` names an existing entry that is not a directory.
bool FileExists(const std::string& path);
// Closes the file; 9 when buffered data could not be written out. A closed
// file is left alone.
int32_t FileClose(File& file);
int32_t FileSize(File& file, int64_t& size);      // 8
int32_t FileTell(File& file, int64_t& position);  // 7
int32_t FileSeek(File& file, int64_t position);   // 8, from the start
// Reads up to `count` bytes; `count` gets the number read. A count of 0 is a
// success. 2 when the end of the file cut the read short (the bytes before it
// are still in the buffer), 5 on a read failure.
int32_t FileRead(File& file, int64_t& count, void* buffer);
// Writes `count` bytes; 6 when not all could be written.
int32_t FileWrite(File& file, int64_t count, const void* buffer);

// Reads one line, a byte at a time. Carriage returns are dropped, blank lines
// skipped. A line is cut at `limit` characters (at least 1) and the rest comes
// as the next line. Returns 0 with a line, 2 at the end of the file when no
// character was read, 5 on a read failure, 1 when memory runs out.
int32_t ReadLine(File& file, std::string& line, int32_t limit);
// Writes the text and a carriage return and line feed, unless the text ends
// with them already. 6 on failure.
int32_t WriteLine(File& file, std::string_view text);

// ---------------------------------------------------------------------------
// Paths. "/" is written; "\" is also taken as a separator when reading.

// The directory and the name with one separator between them. An empty
// directory gives the name alone.
std::string JoinPath(std::string_view directory, std::string_view name);
// The path with its extension (the text after the last "." of the last
// component) replaced. `extension` may start with a "."; at most 40 of its
// characters are used. A name without "." gets the extension added; an empty
// extension removes the old one with its point.
std::string ReplaceExtension(std::string_view path, std::string_view extension);
// The folder of a file: the path cut before its last separator, "/" for a
// file in the root, "" for a bare name.
std::string ProgramDirectory(std::string_view programPath);
// The full path of the running program, "" when it cannot be found.
std::string ExecutablePath();
// False when the name ends in "." followed by the extension, compared without
// regard to case; a leading "." of `extension` is ignored.
bool ExtensionDiffers(std::string_view path, std::string_view extension);
// Puts the temporary directory in `path`: the preference without trailing
// separators, or the system's ($TMPDIR, else "/tmp") when it is empty. The
// directory is created when it is missing. 88 when it neither exists as a
// writable directory nor can be created. The working directory is unchanged.
int32_t CheckTempDirectory(const std::string& preference, std::string& path);
// Where the program keeps a configuration file of its own:
// $XDG_CONFIG_HOME/Lumivue/name, else $HOME/.config/Lumivue/name, else
// Lumivue/name below the working directory. The directory is not created.
std::string ConfigFilePath(std::string_view name);

// ---------------------------------------------------------------------------
// Strings

// What a C buffer of `limit` bytes would hold: at most limit - 1 characters.
void StringCopy(std::string_view source, std::string& destination, int32_t limit);
// Equal when the upper-case forms (ASCII) are equal.
bool StringEqualNoCase(std::string_view a, std::string_view b);
// Packed string lists: a NUL, then each item ended by a NUL, then the byte 1;
// for instance "\0no\0yes\0\1"sv (note the sv: a plain literal would stop at
// its first NUL). Reading never goes past the end of the view, so a list
// missing its end byte is read up to its last complete item.
int32_t ListCount(std::string_view list);
// The item at `index` (from 0); empty when there is none.
std::string_view ListItem(std::string_view list, int32_t index);
// Year * 10000 + month * 100 + day, and hour * 10000 + minute * 100 + second,
// by the local clock.
int32_t TodayNumber();
int32_t TimeNumber();

// ---------------------------------------------------------------------------
// Tokens and numbers

inline constexpr int32_t kMaxTokens = 64;
inline constexpr int32_t kMaxTokenLength = 255;

// Splits a line into at most 64 tokens of at most 255 characters (longer ones
// are cut, tokens past the 64th ignored) and returns their number. Spaces and
// tabs separate tokens; a token in double quotes runs to the next quote or to
// the end and loses its quotes ("" is an empty token); the delimiters
// ( ) * + , / : = [ ] are tokens of their own, except that a "+" after a digit
// and an "E" stays inside the token (1.5E+2). A NUL ends the line.
int32_t Tokenize(std::string_view line, std::vector<std::string>& tokens);

// The number parsers return 0 for success and kErrReading (5) for text that
// is not a number; `value` then holds what was read so far. Callers replace
// the code by the one of their own file kind.
//
// A real: a sign, then digits with at most one "." and at most one "%"
// (which divides by 100), commas ignored (1,000 is 1000), then an optional
// exponent of "E" or "e", a sign and one or two digits. It needs a digit or a
// point. A result too large for a double fails.
// An integer: a sign and at least one digit, within 32 bits.
// The prefix forms read from a NUL-ended text and leave `cursor` at the first
// character that cannot continue the number; the others need the whole text.
int32_t ParseRealPrefix(const char*& cursor, double& value);
int32_t ParseIntPrefix(const char*& cursor, int32_t& value);
int32_t ParseReal(std::string_view text, double& value);
int32_t ParseInt(std::string_view text, int32_t& value);

// Decimal, "-" for negatives.
void IntToText(int64_t value, std::string& text);
// A real with `decimals` places (0..6). Exactly 0 prints "0" (with a point and
// the zeros when decimals > 0), never trimmed and without "%". Otherwise the
// value (times 100 with `percent`) is rounded half away from zero and padded
// with zeros on the left to decimals + 2 characters, point included, not
// counting a minus sign (so 5 with 0 decimals is "05"). `trim` removes
// trailing zeros and then a trailing point; `percent` appends "%". A value
// that is not finite prints "**".
void RealToText(double value, std::string& text, int32_t decimals, bool percent, bool trim);
// A comma before every third character from the right, when the text has 4
// or more; a minus sign counts as a character, so "-123" becomes "-,123".
void GroupThousands(std::string& text);

template <class T>
concept EnumType = std::is_enum_v<T>;

// One argument of FormatText. Built implicitly from integers, reals,
// characters and strings; a string argument is only viewed, so it must live
// until the call returns.
struct FormatArg {
    enum class Kind : int32_t { Int, Real, Text, Char };

    Kind kind = Kind::Int;
    int64_t integer = 0;
    double real = 0.0;
    std::string_view text;
    char character = 0;

    FormatArg(char c) : kind(Kind::Char), character(c) {}
    template <std::integral T>
    FormatArg(T v) : kind(Kind::Int), integer(static_cast<int64_t>(v))
    {
    }
    template <EnumType T>
    FormatArg(T v) : kind(Kind::Int), integer(static_cast<int64_t>(v))
    {
    }
    template <std::floating_point T>
    FormatArg(T v) : kind(Kind::Real), real(static_cast<double>(v))
    {
    }
    FormatArg(const char* s) : kind(Kind::Text), text(s ? s : "") {}
    FormatArg(std::string_view s) : kind(Kind::Text), text(s) {}
    FormatArg(const std::string& s) : kind(Kind::Text), text(s) {}
};

// Formats text. A backslash with n, r or t gives a line feed, carriage return
// or tab, with any other character that character. A "%" starts a field: a
// digit 0..6 sets the width and the decimals, "z" the trim flag, then
//   %%  a percent sign          %d  an integer
//   %,  a grouped integer       %c  a character
//   %s  a string                %f  a real, 4 decimals unless set
// An unknown field character is dropped with its "%" and uses no argument. A
// width (1..6) pads %d and %, on the left with zeros, after any minus sign;
// a longer text becomes that many "*". A missing argument prints nothing. An
// argument of another kind is converted: a real is truncated for %d, a text
// read as a number for %d and %f (0 when it is none), a number printed for %s.
std::string FormatText(std::string_view format, std::initializer_list<FormatArg> args);

template <class... A>
std::string FormatText(std::string_view format, const A&... args)
{
    return FormatText(format, {FormatArg(args)...});
}

}  // namespace lv
