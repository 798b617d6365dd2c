#include "shell/text.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <new>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "shell/errors.h"

namespace lv {

namespace {

bool IsSeparator(char c) { return c == '/' || c == '\\'; }

char UpperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

// ---------------------------------------------------------------------------
// Files

File::~File()
{
    if (stream) std::fclose(stream);
}

File::File(File&& other) noexcept : stream(other.stream) { other.stream = nullptr; }

File& File::operator=(File&& other) noexcept
{
    if (this != &other) {
        if (stream) std::fclose(stream);
        stream = other.stream;
        other.stream = nullptr;
    }
    return *this;
}

namespace {

// Why an entry that is not a regular file cannot be read as one.
const char* NotAFileReason(mode_t mode)
{
    if (S_ISDIR(mode)) return std::strerror(EISDIR);
    if (S_ISFIFO(mode)) return "a named pipe, not a file";
    if (S_ISCHR(mode) || S_ISBLK(mode)) return "a device, not a file";
    if (S_ISSOCK(mode)) return "a socket, not a file";
    return "not a regular file";
}

}  // namespace

int32_t FileCheckRegular(const std::string& path)
{
    struct stat info;
    if (::stat(path.c_str(), &info) != 0 || S_ISREG(info.st_mode)) return kOk;
    SetErrorDetail(NotAFileReason(info.st_mode));
    return kErrCannotOpen;
}

int32_t FileOpenRead(const std::string& path, File& file)
{
    FileClose(file);
    // Opened without waiting, so that a named pipe with no writer cannot
    // hold the program; only a regular file is read.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
        SetErrorDetail(std::strerror(errno));
        return kErrCannotOpen;
    }
    struct stat info;
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        SetErrorDetail(NotAFileReason(info.st_mode));
        ::close(descriptor);
        return kErrCannotOpen;
    }
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    std::FILE* stream = ::fdopen(descriptor, "rb");
    if (!stream) {
        SetErrorDetail(std::strerror(errno));
        ::close(descriptor);
        return kErrCannotOpen;
    }
    file.stream = stream;
    return kOk;
}

int32_t FileCreate(const std::string& path, File& file)
{
    FileClose(file);
    std::FILE* stream = std::fopen(path.c_str(), "wb");
    if (!stream) {
        const int error = errno;
        SetErrorDetail(std::strerror(error));
        return error == EACCES || error == EPERM || error == EROFS ? kErrReadOnlyDisk
                                                                   : kErrCannotCreate;
    }
    file.stream = stream;
    return kOk;
}

int32_t FileDelete(const std::string& path)
{
    return ::unlink(path.c_str()) == 0 ? kOk : kErrDeleting;
}

bool FileExists(const std::string& path)
{
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && !S_ISDIR(info.st_mode);
}

int32_t FileClose(File& file)
{
    if (!file.stream) return kOk;
    int result = std::fclose(file.stream);
    file.stream = nullptr;
    return result == 0 ? kOk : kErrClosing;
}

int32_t FileSize(File& file, int64_t& size)
{
    size = 0;
    if (!file.stream || std::fflush(file.stream) != 0) return kErrSetPosition;
    struct stat info;
    if (fstat(fileno(file.stream), &info) != 0) return kErrSetPosition;
    size = static_cast<int64_t>(info.st_size);
    return kOk;
}

int32_t FileTell(File& file, int64_t& position)
{
    position = 0;
    if (!file.stream) return kErrGetPosition;
    off_t at = ftello(file.stream);
    if (at < 0) return kErrGetPosition;
    position = static_cast<int64_t>(at);
    return kOk;
}

int32_t FileSeek(File& file, int64_t position)
{
    if (!file.stream || position < 0) return kErrSetPosition;
    return fseeko(file.stream, static_cast<off_t>(position), SEEK_SET) == 0 ? kOk : kErrSetPosition;
}

int32_t FileRead(File& file, int64_t& count, void* buffer)
{
    int64_t wanted = count;
    count = 0;
    if (wanted == 0) return kOk;
    if (!file.stream || wanted < 0 || !buffer) return kErrReading;
    size_t got = std::fread(buffer, 1, static_cast<size_t>(wanted), file.stream);
    count = static_cast<int64_t>(got);
    if (got == static_cast<size_t>(wanted)) return kOk;
    return std::ferror(file.stream) ? kErrReading : kErrEndOfFile;
}

int32_t FileWrite(File& file, int64_t count, const void* buffer)
{
    if (count == 0) return kOk;
    if (!file.stream || count < 0 || !buffer) return kErrWriting;
    size_t put = std::fwrite(buffer, 1, static_cast<size_t>(count), file.stream);
    return put == static_cast<size_t>(count) ? kOk : kErrWriting;
}

int32_t ReadLine(File& file, std::string& line, int32_t limit)
{
    line.clear();
    if (!file.stream) return kErrReading;
    size_t most = static_cast<size_t>(std::max(limit, 1));
    try {
        for (;;) {
            int c = std::getc(file.stream);
            if (c == EOF) {
                if (std::ferror(file.stream)) return kErrReading;
                return line.empty() ? kErrEndOfFile : kOk;
            }
            if (c == '\r') continue;
            if (c == '\n') {
                if (line.empty()) continue;
                return kOk;
            }
            line.push_back(static_cast<char>(c));
            if (line.size() >= most) return kOk;
        }
    } catch (const std::bad_alloc&) {
        line.clear();
        return kErrOutOfMemory;
    }
}

int32_t WriteLine(File& file, std::string_view text)
{
    int32_t result = FileWrite(file, static_cast<int64_t>(text.size()), text.data());
    if (result != kOk) return result;
    if (text.size() >= 2 && text.substr(text.size() - 2) == "\r\n") return kOk;
    return FileWrite(file, 2, "\r\n");
}

// ---------------------------------------------------------------------------
// Paths

std::string JoinPath(std::string_view directory, std::string_view name)
{
    std::string path(directory);
    if (!path.empty() && !IsSeparator(path.back())) path += '/';
    path += name;
    return path;
}

std::string ReplaceExtension(std::string_view path, std::string_view extension)
{
    size_t stem = path.size();
    for (size_t i = path.size(); i > 0; --i) {
        char c = path[i - 1];
        if (IsSeparator(c) || c == ':') break;
        if (c == '.') {
            stem = i - 1;
            break;
        }
    }
    if (!extension.empty() && extension.front() == '.') extension.remove_prefix(1);
    extension = extension.substr(0, 40);
    std::string result(path.substr(0, stem));
    if (!extension.empty()) {
        result += '.';
        result += extension;
    }
    return result;
}

std::string ProgramDirectory(std::string_view programPath)
{
    size_t cut = programPath.find_last_of("/\\");
    if (cut == std::string_view::npos) return std::string();
    if (cut == 0) return std::string(1, programPath[0]);
    return std::string(programPath.substr(0, cut));
}

std::string ExecutablePath()
{
    std::error_code error;
    std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return std::string();
    return path.string();
}

bool ExtensionDiffers(std::string_view path, std::string_view extension)
{
    if (!extension.empty() && extension.front() == '.') extension.remove_prefix(1);
    if (path.size() < extension.size() + 1) return true;
    size_t start = path.size() - extension.size();
    if (path[start - 1] != '.') return true;
    return !StringEqualNoCase(path.substr(start), extension);
}

namespace {

bool IsUsableDirectory(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_directory(path, error) && ::access(path.c_str(), W_OK | X_OK) == 0;
}

}  // namespace

int32_t CheckTempDirectory(const std::string& preference, std::string& path)
{
    try {
        std::string directory = preference;
        if (directory.empty()) {
            const char* system = std::getenv("TMPDIR");
            directory = system && *system ? system : "/tmp";
        }
        while (directory.size() > 1 && IsSeparator(directory.back())) directory.pop_back();
        path = directory;
        if (IsUsableDirectory(directory)) return kOk;
        std::error_code error;
        std::filesystem::create_directories(directory, error);
        return IsUsableDirectory(directory) ? kOk : kErrTempDirectory;
    } catch (const std::bad_alloc&) {
        return kErrOutOfMemory;
    }
}

std::string ConfigFilePath(std::string_view name)
{
    std::string base;
    const char* config = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    // A relative XDG_CONFIG_HOME is not a configuration home; it is ignored.
    if (config && config[0] == '/') {
        base = config;
    } else if (home && *home) {
        base = JoinPath(home, ".config");
    }
    return JoinPath(JoinPath(base, "Lumivue"), name);
}

// ---------------------------------------------------------------------------
// Strings

void StringCopy(std::string_view source, std::string& destination, int32_t limit)
{
    size_t keep = limit > 0 ? static_cast<size_t>(limit) - 1 : 0;
    destination.assign(source.substr(0, keep));
}

bool StringEqualNoCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (UpperAscii(a[i]) != UpperAscii(b[i])) return false;
    }
    return true;
}

namespace {

// Calls `visit(index, item)` for each complete item of a packed list until it
// returns true. Returns the number of items visited.
template <class Visit>
int32_t WalkList(std::string_view list, Visit visit)
{
    if (list.empty() || list[0] != '\0') return 0;
    int32_t count = 0;
    size_t at = 1;
    while (at < list.size() && list[at] != '\1') {
        size_t end = list.find('\0', at);
        if (end == std::string_view::npos) break;  // cut short: the item has no NUL
        if (visit(count, list.substr(at, end - at))) return count + 1;
        ++count;
        at = end + 1;
    }
    return count;
}

}  // namespace

int32_t ListCount(std::string_view list)
{
    return WalkList(list, [](int32_t, std::string_view) { return false; });
}

std::string_view ListItem(std::string_view list, int32_t index)
{
    std::string_view found;
    WalkList(list, [&](int32_t i, std::string_view item) {
        if (i != index) return false;
        found = item;
        return true;
    });
    return found;
}

namespace {

bool LocalNow(std::tm& parts)
{
    std::time_t now = std::time(nullptr);
    return localtime_r(&now, &parts) != nullptr;
}

}  // namespace

int32_t TodayNumber()
{
    std::tm parts{};
    if (!LocalNow(parts)) return 0;
    return (parts.tm_year + 1900) * 10000 + (parts.tm_mon + 1) * 100 + parts.tm_mday;
}

int32_t TimeNumber()
{
    std::tm parts{};
    if (!LocalNow(parts)) return 0;
    return parts.tm_hour * 10000 + parts.tm_min * 100 + parts.tm_sec;
}

// ---------------------------------------------------------------------------
// Tokens

namespace {

bool IsDelimiter(char c)
{
    switch (c) {
    case '\0':
    case '\t':
    case ' ':
    case '(':
    case ')':
    case '*':
    case '+':
    case ',':
    case '/':
    case ':':
    case '=':
    case '[':
    case ']': return true;
    default: return false;
    }
}

}  // namespace

int32_t Tokenize(std::string_view line, std::vector<std::string>& tokens)
{
    tokens.clear();
    line = line.substr(0, line.find('\0'));
    const size_t limit = static_cast<size_t>(kMaxTokenLength);
    try {
        size_t at = 0;
        const size_t end = line.size();
        while (tokens.size() < static_cast<size_t>(kMaxTokens)) {
            while (at < end && (line[at] == ' ' || line[at] == '\t')) ++at;
            if (at >= end) break;  // the empty token at the end of the text
            if (line[at] == '"') {
                size_t start = at + 1;
                size_t close = line.find('"', start);
                if (close == std::string_view::npos) close = end;
                tokens.emplace_back(line.substr(start, std::min(close - start, limit)));
                at = close < end ? close + 1 : end;
            } else if (IsDelimiter(line[at])) {
                tokens.emplace_back(1, line[at]);
                ++at;
            } else {
                size_t start = at;
                while (at < end) {
                    char c = line[at];
                    // The sign of an exponent: 1.5E+2 is one token.
                    bool exponentSign = c == '+' && at - start >= 2 &&
                                        (line[at - 1] == 'E' || line[at - 1] == 'e') &&
                                        IsDigit(line[at - 2]);
                    if (IsDelimiter(c) && !exponentSign) break;
                    ++at;
                }
                tokens.emplace_back(line.substr(start, std::min(at - start, limit)));
            }
        }
    } catch (const std::bad_alloc&) {
        tokens.clear();
    }
    return static_cast<int32_t>(tokens.size());
}

// ---------------------------------------------------------------------------
// Numbers

namespace {

// 10 to the power n, n >= 0: the small powers are constants, the others are
// built by repeated squaring (infinity when too large for a double).
double PowerOfTen(int64_t n)
{
    static constexpr double kSmall[] = {1.0, 10.0, 100.0};
    if (n <= 2) return kSmall[n];
    double result = 1.0;
    double square = 10.0;
    for (uint64_t bits = static_cast<uint64_t>(n); bits != 0; bits >>= 1) {
        if (bits & 1) result *= square;
        square *= square;
    }
    return result;
}

// The real parser on a bounded text; `at` moves past what was read. On a
// failure `value` holds the number read up to that point.
int32_t ParseRealAt(std::string_view text, size_t& at, double& value)
{
    auto peek = [&]() { return at < text.size() ? text[at] : '\0'; };
    bool negative = false;
    if (peek() == '-' || peek() == '+') negative = text[at++] == '-';
    double mantissa = 0.0;
    int64_t places = 0;
    int64_t exponent = 0;
    bool point = false;
    bool percent = false;
    bool digit = false;
    // The power is at least -99: places and the percent only make it larger.
    auto finish = [&](int32_t result) {
        int64_t power = places - exponent + (percent ? 2 : 0);
        double scaled = power >= 0 ? mantissa / PowerOfTen(power) : mantissa * PowerOfTen(-power);
        value = negative ? -scaled : scaled;
        if (result == kOk && (!(digit || point) || !std::isfinite(value))) result = kErrReading;
        return result;
    };
    for (;; ++at) {
        char c = peek();
        if (IsDigit(c)) {
            mantissa = mantissa * 10.0 + (c - '0');
            if (point) ++places;
            digit = true;
        } else if (c == '.') {
            if (point) return finish(kErrReading);
            point = true;
        } else if (c == '%') {
            if (percent) return finish(kErrReading);
            percent = true;
        } else if (c != ',') {
            break;
        }
    }
    if (peek() == 'E' || peek() == 'e') {
        ++at;
        bool exponentNegative = false;
        if (peek() == '-' || peek() == '+') exponentNegative = text[at++] == '-';
        if (!IsDigit(peek())) return finish(kErrReading);
        exponent = text[at++] - '0';
        if (IsDigit(peek())) exponent = exponent * 10 + (text[at++] - '0');
        if (exponentNegative) exponent = -exponent;
    }
    return finish(kOk);
}

int32_t ParseIntAt(std::string_view text, size_t& at, int32_t& value)
{
    value = 0;
    auto peek = [&]() { return at < text.size() ? text[at] : '\0'; };
    bool negative = false;
    if (peek() == '-' || peek() == '+') negative = text[at++] == '-';
    if (!IsDigit(peek())) return kErrReading;
    int64_t magnitude = 0;
    bool overflow = false;
    const int64_t most = negative ? -static_cast<int64_t>(INT32_MIN) : INT32_MAX;
    while (IsDigit(peek())) {
        magnitude = magnitude * 10 + (text[at++] - '0');
        if (magnitude > most) {
            magnitude = most;
            overflow = true;
        }
    }
    value = static_cast<int32_t>(negative ? -magnitude : magnitude);
    return overflow ? kErrReading : kOk;
}

}  // namespace

int32_t ParseRealPrefix(const char*& cursor, double& value)
{
    value = 0.0;
    if (!cursor) return kErrReading;
    size_t at = 0;
    int32_t result = ParseRealAt(std::string_view(cursor), at, value);
    cursor += at;
    return result;
}

int32_t ParseIntPrefix(const char*& cursor, int32_t& value)
{
    value = 0;
    if (!cursor) return kErrReading;
    size_t at = 0;
    int32_t result = ParseIntAt(std::string_view(cursor), at, value);
    cursor += at;
    return result;
}

int32_t ParseReal(std::string_view text, double& value)
{
    size_t at = 0;
    int32_t result = ParseRealAt(text, at, value);
    if (result == kOk && at != text.size()) return kErrReading;
    return result;
}

int32_t ParseInt(std::string_view text, int32_t& value)
{
    size_t at = 0;
    int32_t result = ParseIntAt(text, at, value);
    if (result == kOk && at != text.size()) return kErrReading;
    return result;
}

// ---------------------------------------------------------------------------
// Number to text

void IntToText(int64_t value, std::string& text)
{
    char buffer[24];
    auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
    (void)error;
    text.assign(buffer, end);
}

namespace {

// The digits of a non-negative finite value rounded half away from zero, the
// 64-bit form of RoundToInt's rule.
void RoundedDigits(double value, std::string& digits)
{
    double rounded = value + 0.5;
    char buffer[400];
    std::to_chars_result written;
    if (rounded < 18446744073709551616.0) {
        written = std::to_chars(buffer, buffer + sizeof buffer, static_cast<uint64_t>(rounded));
    } else {
        // Beyond 2^64 every double is a whole number: print it exactly.
        written = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 0);
    }
    digits.assign(buffer, written.ptr);
}

}  // namespace

void RealToText(double value, std::string& text, int32_t decimals, bool percent, bool trim)
{
    text.clear();
    const int32_t places = std::clamp(decimals, 0, 6);
    if (value == 0.0) {
        text = "0";
        if (places > 0) {
            text += '.';
            text.append(static_cast<size_t>(places), '0');
        }
        return;
    }
    static constexpr double kScale[] = {1.0, 10.0, 100.0, 1000.0, 10000.0, 100000.0, 1000000.0};
    if (percent) value *= 100.0;
    bool negative = value < 0.0;
    double scaled = std::fabs(value) * kScale[places];
    if (!std::isfinite(scaled)) {
        text = "**";
        return;
    }
    std::string digits;
    RoundedDigits(scaled, digits);
    const size_t least = places > 0 ? static_cast<size_t>(places) + 1 : 2;
    if (digits.size() < least) digits.insert(0, least - digits.size(), '0');
    if (places > 0) digits.insert(digits.size() - static_cast<size_t>(places), 1, '.');
    if (trim && places > 0) {
        while (digits.back() == '0') digits.pop_back();
        if (digits.back() == '.') digits.pop_back();
    }
    if (negative) text = "-";
    text += digits;
    if (percent) text += '%';
}

void GroupThousands(std::string& text)
{
    if (text.size() < 4) return;
    for (size_t at = text.size() - 3; at > 0; at = at > 3 ? at - 3 : 0) text.insert(at, 1, ',');
}

// ---------------------------------------------------------------------------
// Formatting

namespace {

int64_t TruncateToInt64(double value)
{
    if (!(value == value)) return 0;
    if (value >= 9223372036854775807.0) return INT64_MAX;
    if (value <= -9223372036854775808.0) return INT64_MIN;
    return static_cast<int64_t>(value);
}

double ArgAsReal(const FormatArg& arg)
{
    switch (arg.kind) {
    case FormatArg::Kind::Int: return static_cast<double>(arg.integer);
    case FormatArg::Kind::Real: return arg.real;
    case FormatArg::Kind::Char: return static_cast<unsigned char>(arg.character);
    case FormatArg::Kind::Text: {
        double value = 0.0;
        return ParseReal(arg.text, value) == kOk ? value : 0.0;
    }
    }
    return 0.0;
}

int64_t ArgAsInt(const FormatArg& arg)
{
    if (arg.kind == FormatArg::Kind::Int) return arg.integer;
    return TruncateToInt64(ArgAsReal(arg));
}

// The character of a %c field: a number gives the character of that code, a
// text its first character.
char ArgAsChar(const FormatArg& arg)
{
    if (arg.kind == FormatArg::Kind::Char) return arg.character;
    if (arg.kind == FormatArg::Kind::Text) return arg.text.empty() ? '\0' : arg.text[0];
    return static_cast<char>(static_cast<unsigned char>(ArgAsInt(arg) & 0xFF));
}

// Pads a number to `width` with zeros after its sign, or replaces it by
// `width` stars when it is too long.
void ApplyWidth(std::string& number, int32_t width)
{
    if (width <= 0) return;
    size_t wanted = static_cast<size_t>(width);
    if (number.size() > wanted) {
        number.assign(wanted, '*');
    } else if (number.size() < wanted) {
        size_t sign = !number.empty() && number[0] == '-' ? 1 : 0;
        number.insert(sign, wanted - number.size(), '0');
    }
}

}  // namespace

std::string FormatText(std::string_view format, std::initializer_list<FormatArg> args)
{
    try {
        std::string out;
        const FormatArg* next = args.begin();
        size_t at = 0;
        std::string piece;
        while (at < format.size()) {
            char c = format[at++];
            if (c == '\\') {
                if (at >= format.size()) break;
                char e = format[at++];
                out += e == 'n' ? '\n' : e == 'r' ? '\r' : e == 't' ? '\t' : e;
                continue;
            }
            if (c != '%') {
                out += c;
                continue;
            }
            int32_t width = 0;
            int32_t decimals = 4;
            bool trim = false;
            char field = '\0';
            while (at < format.size()) {
                char f = format[at++];
                if (f >= '0' && f <= '6') {
                    width = decimals = f - '0';
                } else if (f == 'z') {
                    trim = true;
                } else {
                    field = f;
                    break;
                }
            }
            if (field == '%') {
                out += '%';
                continue;
            }
            if (field != 'd' && field != ',' && field != 'c' && field != 's' && field != 'f') {
                continue;  // unknown field, or the format ended inside one
            }
            if (next == args.end()) continue;  // missing argument: nothing printed
            const FormatArg& arg = *next++;
            switch (field) {
            case 'd':
            case ',':
                IntToText(ArgAsInt(arg), piece);
                if (field == ',') GroupThousands(piece);
                ApplyWidth(piece, width);
                out += piece;
                break;
            case 'c':
                if (char ch = ArgAsChar(arg); ch != '\0') out += ch;
                break;
            case 's':
                if (arg.kind == FormatArg::Kind::Text) {
                    out += arg.text;
                } else if (arg.kind == FormatArg::Kind::Char) {
                    if (arg.character != '\0') out += arg.character;
                } else if (arg.kind == FormatArg::Kind::Int) {
                    IntToText(arg.integer, piece);
                    out += piece;
                } else {
                    RealToText(arg.real, piece, decimals, false, trim);
                    out += piece;
                }
                break;
            case 'f':
                RealToText(ArgAsReal(arg), piece, decimals, false, trim);
                out += piece;
                break;
            }
        }
        return out;
    } catch (const std::bad_alloc&) {
        return std::string();
    }
}

}  // namespace lv
