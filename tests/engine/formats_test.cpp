#include "files/formats.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/text.h"
#include "support/scripted_frontend.h"
#include "support/temp_dir.h"
#include "synthesis/test_card.h"

namespace lv {
namespace {

namespace fs = std::filesystem;

using test::Contents;
using test::TempDir;

TEST(FileTypes, NamesExtensionsAndFilters)
{
    EXPECT_EQ(FileTypeFromName("/a/b/Photo.JPEG"), kTypeJpeg);
    EXPECT_EQ(FileTypeFromName("scan.tiff"), kTypeTiff);
    EXPECT_EQ(FileTypeFromName("x.fpx"), kTypeFlashPix);
    EXPECT_EQ(FileTypeFromName("dir.d/noext"), -1);  // the point is in a folder's name
    EXPECT_EQ(FileTypeFromName("c:name"), -1);
    EXPECT_EQ(FileTypeFromName("a.doc"), -1);

    EXPECT_EQ(SaveFilterOfType(kTypePng), kSavePng);
    EXPECT_EQ(SaveFilterOfType(kTypePhotoCd), 0);  // always Save As
    EXPECT_EQ(SaveFilterOfType(kTypeFlashPix), 0);
    EXPECT_EQ(SaveFilterFromName("out.EPS"), kSaveEps);
    EXPECT_EQ(SaveFilterFromName("out.jpeg"), kSaveJpeg);
    EXPECT_EQ(SaveFilterFromName("out.pcd"), 0);
    EXPECT_TRUE(ExtensionFitsFilter("x.Tiff", kSaveTiff));
    EXPECT_FALSE(ExtensionFitsFilter("x.jpg", kSaveTiff));
    EXPECT_EQ(WithExtension("name", "tif"), "name.tif");
    EXPECT_EQ(WithExtension("name.", "tif"), "name.tif");
    EXPECT_FALSE(HasExtension("name"));
    EXPECT_STREQ(FindSaveFilter(kSaveGif)->extensionMessage,
                 "GIF files must have an extension of .gif");

    Image color;
    ASSERT_EQ(MakeTestCard(color, kImageColor, 8, 8), 0);
    EXPECT_EQ(CheckSaveKind(kSaveGif, color), 55);
    EXPECT_EQ(CheckSaveKind(kSaveTarga, color), 0);
    Image bits;
    ASSERT_EQ(MakeTestCard(bits, kImageBinary, 8, 8), 0);
    EXPECT_EQ(CheckSaveKind(kSaveJpeg, bits), 24);
    EXPECT_EQ(CheckSaveKind(kSaveTarga, bits), 0);  // a binary picture may go to Targa
}

TEST(FileTypes, RecentListMovesNamesToTheFront)
{
    SessionState s;
    RecentAdd(s, 3, "/a");
    RecentAdd(s, 3, "/b");
    RecentAdd(s, 3, "/c");
    EXPECT_EQ(s.recentFiles[0], "/c");
    RecentAdd(s, 3, "/A");  // found again without regard to case: to the front
    EXPECT_EQ(s.recentFiles[0], "/a");
    EXPECT_EQ(s.recentFiles[1], "/c");
    EXPECT_EQ(s.recentFiles[2], "/b");
    RecentAdd(s, 3, "/d");  // the last falls off
    EXPECT_EQ(s.recentFiles[2], "/c");
    EXPECT_TRUE(s.recentFiles[3].empty());
    RecentRemove(s, "/A");
    EXPECT_EQ(s.recentFiles[0], "/d");
    EXPECT_EQ(s.recentFiles[1], "/c");
}

TEST(FileWriting, RoundTripsEveryFormatAndKind)
{
    TempDir dir;
    for (int32_t kind : {kImageBinary, kImageGray, kImageColor}) {
        Image picture;
        ASSERT_EQ(MakeTestCard(picture, kind, 37, 21), 0);
        picture.resolution = 150.0;
        for (const SaveFilterInfo& f : SaveFilters()) {
            if (CheckSaveKind(f.filter, picture) || f.filter == kSaveEps || f.filter == kSaveJpeg)
                continue;
            const std::string path = dir / (std::string("card.") + f.extension).c_str();
            ASSERT_EQ(WriteImageFile(path, f.filter, picture, SaveOptions()), 0) << f.filterName;
            Image back;
            ASSERT_EQ(ReadImageFile(path, FileTypeFromName(path), back, false), 0)
                << f.filterName << " kind " << kind;
            // Targa keeps a binary picture as gray.
            const int32_t expected =
                kind == kImageBinary && f.filter == kSaveTarga ? kImageGray : kind;
            ASSERT_EQ(back.kind, expected) << f.filterName;
            ASSERT_EQ(back.width, 37);
            ASSERT_EQ(back.height, 21);
            for (int32_t y = 0; y < 21; ++y)
                for (int32_t x = 0; x < 37; ++x) {
                    const int32_t want = kind == kImageBinary ? GetBit(picture.rows[y], x) * 255
                                         : kind == kImageGray ? picture.rows[y][x]
                                                              : picture.rows[y][x * 3 + 1];
                    const int32_t got = back.kind == kImageBinary ? GetBit(back.rows[y], x) * 255
                                        : back.kind == kImageGray ? back.rows[y][x]
                                                                  : back.rows[y][x * 3 + 1];
                    ASSERT_EQ(got, want) << f.filterName << " at " << x << "," << y;
                }
            // TIFF stores inches, BMP and PCX and PNG metres; Targa and GIF nothing.
            if (f.filter == kSaveTiff || f.filter == kSaveBmp || f.filter == kSavePng) {
                EXPECT_NEAR(back.resolution, 150.0, 0.5) << f.filterName;
            }
        }
    }
}

TEST(FileWriting, FailuresAndAbortsLeaveTheOldFileAlone)
{
    TempDir dir;
    const std::string path = dir / "keep.tif";
    {
        std::ofstream out(path, std::ios::binary);
        out << "old contents";
    }
    Image color;
    ASSERT_EQ(MakeTestCard(color, kImageColor, 300, 200), 0);
    // A bad kind is refused before the disk is touched.
    EXPECT_EQ(WriteImageFile(dir / "colour.gif", kSaveGif, color, SaveOptions()), 55);
    EXPECT_FALSE(fs::exists(dir / "colour.gif"));

    test::ScriptedFrontEnd fe;
    fe.abortAtStep = 100;
    ScopedFrontEnd installed(fe);
    EXPECT_EQ(WriteImageFile(path, kSaveTiff, color, SaveOptions()), kErrAborted);
    EXPECT_EQ(Contents(path), "old contents");
    size_t files = 0;
    for (const auto& entry : fs::directory_iterator(dir.path)) files += entry.is_regular_file();
    EXPECT_EQ(files, 1u);  // no temporary file left behind

    fe.abortAtStep = -1;
    EXPECT_EQ(WriteImageFile(path, kSaveTiff, color, SaveOptions()), 0);
    EXPECT_NE(Contents(path), "old contents");
}

// Every format turns a file it cannot create into its own write error, with
// the system's reason, and leaves nothing behind: not in a missing folder,
// and not when the finished file cannot take the place of a folder.
TEST(FileWriting, UncreatableFilesGiveEachFormatsWriteError)
{
    TempDir dir;
    Image gray;  // a kind every filter takes
    ASSERT_EQ(MakeTestCard(gray, kImageGray, 30, 20), 0);
    const struct {
        const char* name;
        int32_t code;
    } cases[] = {{"out.tif", 57}, {"out.png", 49}, {"out.bmp", 29}, {"out.tga", 26},
                 {"out.pcx", 51}, {"out.gif", 54}, {"out.eps", 59}, {"out.jpg", 23}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = dir / (std::string("missing/") + c.name).c_str();
        ClearErrorDetail();
        EXPECT_EQ(WriteImageFile(path, SaveFilterFromName(path), gray, SaveOptions()), c.code);
        EXPECT_EQ(ErrorDetail(), "No such file or directory");
    }
    EXPECT_TRUE(fs::is_empty(dir.path));

    // The temporary file is written, but a folder stands where it should go.
    fs::create_directory(dir / "taken.tif");
    ClearErrorDetail();
    EXPECT_EQ(WriteImageFile(dir / "taken.tif", kSaveTiff, gray, SaveOptions()), 57);
    EXPECT_EQ(ErrorDetail(), "Is a directory");
    // The folder alone: the temporary file is deleted.
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path), fs::directory_iterator()), 1);
}

TEST(FileReading, ContentsDecideAndErrorsAreTheFormats)
{
    TempDir dir;
    const std::string text = dir / "text.png";
    {
        std::ofstream out(text);
        out << "this is not a picture at all, only text\n";
    }
    Image image;
    EXPECT_EQ(ReadImageFile(text, kTypePng, image, false), 48);
    EXPECT_EQ(ErrorDetail(), "not a PNG file");
    EXPECT_EQ(ReadImageFile(text, kTypeBmp, image, false), 28);
    EXPECT_EQ(ErrorDetail(), "not a BMP file");
    EXPECT_EQ(ReadImageFile(text, kTypeFlashPix, image, false), 45);
    EXPECT_EQ(ErrorDetail(), "no reader for FlashPix files");

    // A JPEG under another name is read as JPEG.
    Image gray;
    ASSERT_EQ(MakeTestCard(gray, kImageGray, 40, 30), 0);
    const std::string slide = dir / "slide.001";
    ASSERT_EQ(WriteImageFile(dir / "slide.jpg", kSaveJpeg, gray, SaveOptions()), 0);
    fs::rename(dir / "slide.jpg", slide);
    EXPECT_EQ(ReadImageFile(slide, kTypeTiff, image, false), 0);
    EXPECT_EQ(image.kind, kImageGray);
    EXPECT_EQ(image.width, 40);
}

// Every format turns a file it cannot open into its own read error, with
// the system's reason.
TEST(FileReading, UnopenableFilesGiveEachFormatsReadError)
{
    TempDir dir;
    const struct {
        const char* name;
        int32_t code;
    } cases[] = {{"absent.tif", 56}, {"absent.png", 48}, {"absent.bmp", 28}, {"absent.tga", 25},
                 {"absent.pcx", 50}, {"absent.gif", 53}, {"absent.jpg", 22}, {"absent.pcd", 90}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = dir / c.name;
        Image image;
        ClearErrorDetail();
        EXPECT_EQ(ReadImageFile(path, FileTypeFromName(path), image, false), c.code);
        EXPECT_EQ(ErrorDetail(), "No such file or directory");
    }
    // Only regular files are read: a folder, a named pipe with no writer (which
    // would hold the program forever) or a device is refused at once.
    fs::create_directory(dir / "folder.bmp");
    ASSERT_EQ(::mkfifo((dir / "pipe.png").c_str(), 0600), 0);
    const struct {
        std::string path;
        const char* reason;
    } others[] = {{dir / "folder.bmp", "Is a directory"},
                  {dir / "pipe.png", "a named pipe, not a file"},
                  {"/dev/zero", "a device, not a file"}};
    for (const auto& other : others) {
        SCOPED_TRACE(other.path);
        Image image;
        ClearErrorDetail();
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(ReadImageFile(other.path, kTypePng, image, false), kErrCannotOpen);
        EXPECT_EQ(ErrorDetail(), other.reason);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    }
}

// A refused file gives its type's read error and the codec's reason.
TEST(FileReading, RefusalsNameTheirReason)
{
    TempDir dir;
    Image image;

    // A BMP header of 100000 by 100000 colour pixels over 16 bytes of data.
    std::string bmp(54 + 16, '\x55');
    auto put32 = [&](size_t at, uint32_t v) {
        for (int i = 0; i < 4; ++i) bmp[at + i] = static_cast<char>(v >> (8 * i));
    };
    bmp[0] = 'B';
    bmp[1] = 'M';
    for (size_t at = 2; at < 54; at += 4) put32(at, 0);
    put32(10, 54);            // the pixels' offset
    put32(14, 40);            // the header's size
    put32(18, 100000);        // width
    put32(22, 100000);        // height
    put32(26, 1 | 24 << 16);  // one plane of 24 bits
    std::ofstream(dir / "huge.bmp", std::ios::binary) << bmp;
    EXPECT_EQ(ReadImageFile(dir / "huge.bmp", kTypeBmp, image, false), 28);
    EXPECT_EQ(ErrorDetail(), "header claims 100000 x 100000 pixels");

    // A TIFF cut short: libtiff's own words for what it missed.
    Image card;
    ASSERT_EQ(MakeTestCard(card, kImageColor, 120, 90), 0);
    ASSERT_EQ(WriteImageFile(dir / "whole.tif", kSaveTiff, card, SaveOptions()), 0);
    const std::string whole = Contents(dir / "whole.tif");
    std::ofstream(dir / "cut.tif", std::ios::binary) << whole.substr(0, whole.size() / 2);
    ClearErrorDetail();
    EXPECT_EQ(ReadImageFile(dir / "cut.tif", kTypeTiff, image, false), 56);
    EXPECT_NE(ErrorDetail().find("TIFF directory"), std::string::npos) << ErrorDetail();
}

}  // namespace
}  // namespace lv
