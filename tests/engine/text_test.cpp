#include "shell/text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "shell/errors.h"

namespace lv {
namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

// A fresh directory for one test, removed with everything in it afterwards.
class TempDir {
public:
    TempDir()
    {
        static int counter = 0;
        path_ = fs::temp_directory_path() /
                ("lv_text_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
        fs::create_directories(path_);
    }
    ~TempDir()
    {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    std::string File(const std::string& name) const { return (path_ / name).string(); }
    std::string Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(File(name), std::ios::binary) << bytes;
        return File(name);
    }

private:
    fs::path path_;
};

std::vector<std::string> ReadAllLines(const std::string& path, int32_t limit, int32_t& last)
{
    lv::File file;
    std::vector<std::string> lines;
    if ((last = FileOpenRead(path, file)) != kOk) return lines;
    std::string line;
    while ((last = ReadLine(file, line, limit)) == kOk) lines.push_back(line);
    return lines;
}

TEST(ReadLine, EndingsBlankLinesLastLineAndLimit)
{
    TempDir dir;
    int32_t last = 0;
    using Lines = std::vector<std::string>;
    EXPECT_EQ(ReadAllLines(dir.Write("crlf", "a b\r\nc\r\n"), 255, last), (Lines{"a b", "c"}));
    EXPECT_EQ(last, kErrEndOfFile);
    EXPECT_EQ(ReadAllLines(dir.Write("lf", "a\n\n\r\n\nb\n"), 255, last), (Lines{"a", "b"}));
    EXPECT_EQ(ReadAllLines(dir.Write("open", "x\r\nlast"), 255, last), (Lines{"x", "last"}));
    EXPECT_EQ(ReadAllLines(dir.Write("cut", "abcdefg\r\nh\r\n"), 3, last),
              (Lines{"abc", "def", "g", "h"}));
    // A line of exactly the limit does not produce an empty line after it.
    EXPECT_EQ(ReadAllLines(dir.Write("exact", "abc\r\nd"), 3, last), (Lines{"abc", "d"}));
    EXPECT_EQ(ReadAllLines(dir.Write("empty", ""), 255, last), Lines{});
    EXPECT_EQ(last, kErrEndOfFile);
    // A limit below 1 still makes progress.
    EXPECT_EQ(ReadAllLines(dir.Write("zero", "ab"), 0, last), (Lines{"a", "b"}));
}

TEST(WriteLine, AddsCrLfOnlyWhenMissing)
{
    TempDir dir;
    lv::File file;
    ASSERT_EQ(FileCreate(dir.File("out"), file), kOk);
    EXPECT_EQ(WriteLine(file, "one"), kOk);
    EXPECT_EQ(WriteLine(file, "two\r\n"), kOk);
    EXPECT_EQ(WriteLine(file, ""), kOk);
    EXPECT_EQ(FileClose(file), kOk);
    std::ifstream in(dir.File("out"), std::ios::binary);
    std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(all, "one\r\ntwo\r\n\r\n");
    EXPECT_EQ(WriteLine(file, "closed"), kErrWriting);
}

TEST(Files, CodesOfTheFileCalls)
{
    TempDir dir;
    lv::File file;
    EXPECT_EQ(FileOpenRead(dir.File("missing"), file), kErrCannotOpen);
    EXPECT_EQ(FileOpenRead(dir.File(""), file), kErrCannotOpen);  // the directory itself
    EXPECT_EQ(FileCreate(dir.File("no/such/dir"), file), kErrCannotCreate);
    EXPECT_EQ(FileDelete(dir.File("missing")), kErrDeleting);
    EXPECT_FALSE(FileExists(dir.File("")));

    std::string path = dir.Write("data", "0123456789");
    EXPECT_TRUE(FileExists(path));
    ASSERT_EQ(FileOpenRead(path, file), kOk);
    int64_t size = 0, position = -1;
    EXPECT_EQ(FileSize(file, size), kOk);
    EXPECT_EQ(size, 10);
    char buffer[16] = {};
    int64_t count = 0;
    EXPECT_EQ(FileRead(file, count, buffer), kOk);
    EXPECT_EQ(FileSeek(file, 7), kOk);
    EXPECT_EQ(FileTell(file, position), kOk);
    EXPECT_EQ(position, 7);
    count = 8;
    EXPECT_EQ(FileRead(file, count, buffer), kErrEndOfFile);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(std::string(buffer, 3), "789");
    EXPECT_EQ(FileSeek(file, -1), kErrSetPosition);
    FileClose(file);
    count = 4;
    EXPECT_EQ(FileRead(file, count, buffer), kErrReading);
    EXPECT_EQ(FileTell(file, position), kErrGetPosition);
    EXPECT_EQ(FileDelete(path), kOk);
    EXPECT_FALSE(FileExists(path));
}

TEST(Paths, JoinReplaceAndCompare)
{
    EXPECT_EQ(JoinPath("/a/b", "c.crv"), "/a/b/c.crv");
    EXPECT_EQ(JoinPath("/a/b/", "c"), "/a/b/c");
    EXPECT_EQ(JoinPath("c:\\dir\\", "c"), "c:\\dir\\c");
    EXPECT_EQ(JoinPath("", "c"), "c");

    EXPECT_EQ(ReplaceExtension("/a/pic.tif", "jpg"), "/a/pic.jpg");
    EXPECT_EQ(ReplaceExtension("/a/pic.old.tif", ".crv"), "/a/pic.old.crv");
    EXPECT_EQ(ReplaceExtension("/a.b/pic", "crv"), "/a.b/pic.crv");
    EXPECT_EQ(ReplaceExtension("c:pic", "crv"), "c:pic.crv");
    EXPECT_EQ(ReplaceExtension("pic.tif", ""), "pic");
    EXPECT_EQ(ReplaceExtension("p.x", std::string(50, 'e')), "p." + std::string(40, 'e'));

    EXPECT_EQ(ProgramDirectory("/usr/bin/lumivue"), "/usr/bin");
    EXPECT_EQ(ProgramDirectory("/lumivue"), "/");
    EXPECT_EQ(ProgramDirectory("lumivue"), "");

    EXPECT_FALSE(ExtensionDiffers("photo.tif", ".TIF"));
    EXPECT_FALSE(ExtensionDiffers("PHOTO.Tif", "tif"));
    EXPECT_TRUE(ExtensionDiffers("photo.tiff", "tif"));
    EXPECT_TRUE(ExtensionDiffers("phototif", "tif"));
    EXPECT_TRUE(ExtensionDiffers("tif", "tif"));
}

TEST(Paths, TempAndConfigDirectories)
{
    TempDir dir;
    std::string path;
    EXPECT_EQ(CheckTempDirectory(dir.File("") + "//", path), kOk);
    EXPECT_NE(path.back(), '/');
    EXPECT_TRUE(fs::equivalent(path, dir.File("")));
    EXPECT_EQ(CheckTempDirectory(dir.File("new/deeper"), path), kOk);
    EXPECT_TRUE(fs::is_directory(path));
    std::string plain = dir.Write("plain", "x");
    EXPECT_EQ(CheckTempDirectory(plain, path), kErrTempDirectory);
    EXPECT_EQ(CheckTempDirectory("", path), kOk);
    EXPECT_FALSE(path.empty());
}

TEST(Strings, CopyCaseAndPackedLists)
{
    std::string out;
    StringCopy("abcdef", out, 4);
    EXPECT_EQ(out, "abc");
    StringCopy("ab", out, 0);
    EXPECT_EQ(out, "");
    EXPECT_TRUE(StringEqualNoCase("Curve", "cURVE"));
    EXPECT_FALSE(StringEqualNoCase("Curve", "Curves"));

    std::string_view list = "\0no\0yes\0\1"sv;
    EXPECT_EQ(ListCount(list), 2);
    EXPECT_EQ(ListItem(list, 0), "no");
    EXPECT_EQ(ListItem(list, 1), "yes");
    EXPECT_EQ(ListItem(list, 2), "");
    EXPECT_EQ(ListItem(list, -1), "");
    EXPECT_EQ(ListCount("\0\1"sv), 0);
    EXPECT_EQ(ListCount("\0no\0ye"sv), 1);  // no end byte, last item cut short
    EXPECT_EQ(ListCount("no\0\1"sv), 0);    // not a packed list
    EXPECT_EQ(ListCount(""sv), 0);
}

TEST(Tokenize, DelimitersQuotesAndLimits)
{
    std::vector<std::string> t;
    using Tokens = std::vector<std::string>;
    EXPECT_EQ(Tokenize("point 10 20", t), 3);
    EXPECT_EQ(t, (Tokens{"point", "10", "20"}));
    EXPECT_EQ(Tokenize("a=b", t), 3);
    EXPECT_EQ(t, (Tokens{"a", "=", "b"}));
    EXPECT_EQ(Tokenize("\"x y\" 1", t), 2);
    EXPECT_EQ(t, (Tokens{"x y", "1"}));
    EXPECT_EQ(Tokenize("\"\"", t), 1);
    EXPECT_EQ(t, (Tokens{""}));
    EXPECT_EQ(Tokenize("\"open to end", t), 1);
    EXPECT_EQ(t, (Tokens{"open to end"}));
    EXPECT_EQ(Tokenize(" \t f(1.5E+2,-3e+1)[x/y:z]*w", t), 15);
    EXPECT_EQ(t, (Tokens{"f", "(", "1.5E+2", ",", "-3e+1", ")", "[", "x", "/", "y", ":", "z", "]",
                         "*", "w"}));
    EXPECT_EQ(Tokenize("e+2 a+b", t), 6);
    EXPECT_EQ(t, (Tokens{"e", "+", "2", "a", "+", "b"}));
    EXPECT_EQ(Tokenize("", t), 0);
    EXPECT_EQ(Tokenize("   \t ", t), 0);
    EXPECT_EQ(Tokenize("a\0b"sv, t), 1);

    std::string longToken(300, 'x');
    EXPECT_EQ(Tokenize(longToken + " y", t), 2);
    EXPECT_EQ(t[0], std::string(255, 'x'));
    EXPECT_EQ(t[1], "y");
    EXPECT_EQ(Tokenize("\"" + longToken + "\"", t), 1);
    EXPECT_EQ(t[0].size(), 255u);

    std::string many;
    for (int i = 0; i < 70; ++i) many += std::to_string(i) + " ";
    EXPECT_EQ(Tokenize(many, t), 64);
    EXPECT_EQ(t.back(), "63");
}

TEST(ParseReal, DigitsCommasPointsPercentsAndExponents)
{
    double v = -1.0;
    EXPECT_EQ(ParseReal("12,500.5", v), kOk);
    EXPECT_EQ(v, 12500.5);
    EXPECT_EQ(ParseReal("50%", v), kOk);
    EXPECT_EQ(v, 0.5);
    EXPECT_EQ(ParseReal(".", v), kOk);
    EXPECT_EQ(v, 0.0);
    EXPECT_EQ(ParseReal("1.5E+2", v), kOk);
    EXPECT_EQ(v, 150.0);
    EXPECT_EQ(ParseReal("3e1", v), kOk);
    EXPECT_EQ(v, 30.0);
    EXPECT_EQ(ParseReal("-2.5e-3", v), kOk);
    EXPECT_EQ(v, -0.0025);
    EXPECT_EQ(ParseReal("+7", v), kOk);
    EXPECT_EQ(v, 7.0);
    EXPECT_EQ(ParseReal("12.5%", v), kOk);
    EXPECT_EQ(v, 0.125);

    EXPECT_NE(ParseReal("1.2.3", v), kOk);
    EXPECT_EQ(v, 1.2);  // the value read before the failure
    EXPECT_NE(ParseReal("5%%", v), kOk);
    EXPECT_NE(ParseReal("-", v), kOk);
    EXPECT_NE(ParseReal("", v), kOk);
    EXPECT_NE(ParseReal("%", v), kOk);
    EXPECT_NE(ParseReal("1e", v), kOk);
    EXPECT_NE(ParseReal("1e+", v), kOk);
    EXPECT_NE(ParseReal("1e123", v), kOk);  // three exponent digits leave text
    EXPECT_NE(ParseReal("12a", v), kOk);
    EXPECT_NE(ParseReal(" 1", v), kOk);
    EXPECT_NE(ParseReal(std::string(400, '9'), v), kOk);  // too large for a double
    EXPECT_EQ(ParseReal("0." + std::string(400, '0') + "1", v), kOk);
    EXPECT_EQ(v, 0.0);
    EXPECT_NE(ParseReal("1\0"sv, v), kOk);

    const char* text = "12.5mm";
    EXPECT_EQ(ParseRealPrefix(text, v), kOk);
    EXPECT_EQ(v, 12.5);
    EXPECT_STREQ(text, "mm");
}

TEST(ParseInt, SignsDigitsAndOverflow)
{
    int32_t v = -1;
    EXPECT_EQ(ParseInt("-42", v), kOk);
    EXPECT_EQ(v, -42);
    EXPECT_EQ(ParseInt("2147483647", v), kOk);
    EXPECT_EQ(v, INT32_MAX);
    EXPECT_EQ(ParseInt("-2147483648", v), kOk);
    EXPECT_EQ(v, INT32_MIN);
    EXPECT_NE(ParseInt("2147483648", v), kOk);
    EXPECT_NE(ParseInt("99999999999999999999", v), kOk);
    EXPECT_NE(ParseInt("-", v), kOk);
    EXPECT_NE(ParseInt("1.5", v), kOk);
    EXPECT_NE(ParseInt("1,000", v), kOk);
    EXPECT_NE(ParseInt("", v), kOk);

    const char* text = "-17px";
    EXPECT_EQ(ParseIntPrefix(text, v), kOk);
    EXPECT_EQ(v, -17);
    EXPECT_STREQ(text, "px");
    const char* none = nullptr;
    EXPECT_NE(ParseIntPrefix(none, v), kOk);
}

std::string Real(double value, int32_t decimals, bool percent = false, bool trim = false)
{
    std::string text;
    RealToText(value, text, decimals, percent, trim);
    return text;
}

TEST(RealToText, ZeroPaddingRoundingTrimAndPercent)
{
    EXPECT_EQ(Real(0.0, 0), "0");
    EXPECT_EQ(Real(0.0, 3), "0.000");
    EXPECT_EQ(Real(0.0, 2, true, true), "0.00");  // zero is never trimmed nor given a "%"
    EXPECT_EQ(Real(0.05, 2), "0.05");
    EXPECT_EQ(Real(5.0, 0), "05");
    EXPECT_EQ(Real(123.0, 0), "123");
    EXPECT_EQ(Real(1.25, 1), "1.3");  // halves away from zero
    EXPECT_EQ(Real(-1.25, 1), "-1.3");
    EXPECT_EQ(Real(-0.05, 2), "-0.05");
    EXPECT_EQ(Real(-5.0, 0), "-05");
    EXPECT_EQ(Real(1.5, 2, false, true), "1.5");
    EXPECT_EQ(Real(2.0, 2, false, true), "2");
    EXPECT_EQ(Real(10.0, 3, false, true), "10");
    EXPECT_EQ(Real(0.5, 1, true), "50.0%");
    EXPECT_EQ(Real(0.125, 2, true, true), "12.5%");
    EXPECT_EQ(Real(3.14159, 9), "3.141590");  // decimals limited to 6
    EXPECT_EQ(Real(2.5, -3), "03");
    EXPECT_EQ(Real(1e10, 2), "10000000000.00");  // beyond 32 bits
    EXPECT_EQ(Real(1e20, 0), "100000000000000000000");
    EXPECT_EQ(Real(1e300, 6).size(), 308u);
    EXPECT_EQ(Real(std::numeric_limits<double>::infinity(), 2), "**");
    EXPECT_EQ(Real(std::numeric_limits<double>::quiet_NaN(), 2), "**");
    EXPECT_EQ(Real(1e308, 0, true), "**");

    std::string text;
    IntToText(INT64_MIN, text);
    EXPECT_EQ(text, "-9223372036854775808");
    text = "-123";
    GroupThousands(text);
    EXPECT_EQ(text, "-,123");
    text = "123456";
    GroupThousands(text);
    EXPECT_EQ(text, "123,456");
    text = "123";
    GroupThousands(text);
    EXPECT_EQ(text, "123");
}

TEST(FormatText, Fields)
{
    EXPECT_EQ(FormatText("%3d", 1234), "***");
    EXPECT_EQ(FormatText("%,", 1234567), "1,234,567");
    EXPECT_EQ(FormatText("%,", -123), "-,123");
    EXPECT_EQ(FormatText("%z2f|%z2f|%2zf", 1.50, 2.00, 0.25), "1.5|2|0.25");
    EXPECT_EQ(FormatText("%f %1f %0f", 1.0, 2.25, 7.0), "1.0000 2.3 07");
    EXPECT_EQ(FormatText("%2d %2d %2d", 7, 123, 45), "07 ** 45");
    EXPECT_EQ(FormatText("%3d|%2d|%0d", -5, -10, -10), "-05|**|-10");
    EXPECT_EQ(FormatText("%6,", 1234), "01,234");
    EXPECT_EQ(FormatText("%d%%", 50), "50%");
    EXPECT_EQ(FormatText("%c%s!", 'h', "ello"), "hello!");
    EXPECT_EQ(FormatText("%s", std::string("str")), "str");
    EXPECT_EQ(FormatText("%d", static_cast<uint8_t>(200)), "200");
    EXPECT_EQ(FormatText("%d", INT64_MAX), "9223372036854775807");
}

TEST(FormatText, EscapesUnknownFieldsMissingAndMismatchedArguments)
{
    EXPECT_EQ(FormatText("a\\nb\\rc\\td\\\\e\\\"f\\"), "a\nb\rc\td\\e\"f");
    EXPECT_EQ(FormatText("%x%d", 5), "5");  // unknown field uses no argument
    EXPECT_EQ(FormatText("%7d", 5), "d");   // 7 is not a width
    EXPECT_EQ(FormatText("end%"), "end");
    EXPECT_EQ(FormatText("%d and %d", 1), "1 and ");
    EXPECT_EQ(FormatText("%s%f%c", 1), "1");
    EXPECT_EQ(FormatText("no fields", 1, 2), "no fields");
    EXPECT_EQ(FormatText("%d %d %d", 2.9, -2.9, 1e300), "2 -2 9223372036854775807");
    EXPECT_EQ(FormatText("%d", std::numeric_limits<double>::quiet_NaN()), "0");
    EXPECT_EQ(FormatText("%f|%d|%d", 3, "12", "abc"), "3.0000|12|0");
    EXPECT_EQ(FormatText("%s|%1s|%c|%c", 2.5, 2.25, 65, "xyz"), "2.5000|2.3|A|x");
    EXPECT_EQ(FormatText("%d", kErrCurveFile), "16");
    EXPECT_EQ(FormatText("%s", static_cast<const char*>(nullptr)), "");
}

}  // namespace
}  // namespace lv
