#include "files/formats.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

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

    // Into a folder that does not exist: a file error, nothing written.
    fe.abortAtStep = -1;
    EXPECT_NE(WriteImageFile(dir / "missing/x.png", kSavePng, color, SaveOptions()), 0);
    EXPECT_EQ(WriteImageFile(path, kSaveTiff, color, SaveOptions()), 0);
    EXPECT_NE(Contents(path), "old contents");
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
    EXPECT_EQ(ReadImageFile(text, kTypeBmp, image, false), 28);
    EXPECT_EQ(ReadImageFile(dir / "absent.tif", kTypeTiff, image, false), kErrCannotOpen);
    EXPECT_EQ(ReadImageFile(text, kTypeFlashPix, image, false), 45);

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

}  // namespace
}  // namespace lv
