// lumivue-cli run as a user runs it: its exit status, its one-line messages
// naming the file or option they are about, and what it writes.
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>

#include "files/formats.h"
#include "image/image.h"
#include "shell/tables.h"
#include "support/pictures.h"
#include "support/temp_dir.h"
#include "synthesis/test_card.h"
#include "tone/curves/curve.h"
#include "transform/registry.h"

namespace lv {
namespace {

struct Outcome {
    int status = -1;
    std::string out, err;
};

std::string Quote(const std::string& arg)
{
    std::string quoted = "'";
    for (char c : arg) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

class Cli : public ::testing::Test {
protected:
    static void SetUpTestSuite() { InitEngineTables(); }

    Outcome Cmd(std::initializer_list<std::string> args)
    {
        std::string line = Quote(LUMIVUE_CLI);
        for (const std::string& a : args) line += " " + Quote(a);
        const std::string out = dir_ / "stdout.txt", err = dir_ / "stderr.txt";
        line += " >" + Quote(out) + " 2>" + Quote(err) + " </dev/null";
        Outcome run;
        const int raw = std::system(line.c_str());
        run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        run.out = test::Contents(out);
        run.err = test::Contents(err);
        return run;
    }

    // A picture written with the engine: a test card of a kind and size.
    std::string Picture(const char* name, int32_t kind, int32_t width, int32_t height)
    {
        Image card;
        EXPECT_EQ(MakeTestCard(card, kind, width, height), 0);
        const std::string path = dir_ / name;
        EXPECT_EQ(WriteImageFile(path, SaveFilterFromName(path), card, SaveOptions()), 0);
        return path;
    }

    std::string File(const char* name, const std::string& contents)
    {
        const std::string path = dir_ / name;
        std::ofstream(path, std::ios::binary) << contents;
        return path;
    }

    bool Exists(const std::string& path) { return std::filesystem::exists(path); }

    test::TempDir dir_;
};

// The registered transformations, as the tool lists them.
std::string ModuleNames()
{
    std::string names;
    for (const TransformModule& m : Transforms()) names += (names.empty() ? "" : ", ") + std::string(m.name);
    return names;
}

// Every mistake of the command line: one line naming the option and what is
// allowed, status 100, and no output written.
TEST_F(Cli, MistakesExit100WithOneLineAndWriteNothing)
{
    const std::string in = Picture("in.tif", kImageColor, 40, 30);
    const std::string gray = Picture("gray.tif", kImageGray, 40, 30);
    const std::string out = dir_ / "out.tif";
    struct Case {
        std::initializer_list<std::string> args;
        std::string message;
    };
    const Case cases[] = {
        {{"frobnicate", in, out},
         "unknown command 'frobnicate'; commands: info, convert, negative, apply, list, "
         "histogram, help, version"},
        {{"apply", "sharpenify", in, out},
         "apply: no transformation 'sharpenify'; there are: " + ModuleNames()},
        {{"apply", "negative", "--foo", "1", in, out},
         "unknown option --foo for apply negative; allowed: --amount, --mask, --amount2, "
         "--quality, --sampling, --format, --jobs, --compression, --no-orient"},
        {{"convert", "-q", "5", in, out},
         "unknown option -q for convert; allowed: --quality, --sampling, --format, --jobs, "
         "--compression, --no-orient"},
        {{"convert", "--compression", "zip", in, out},
         "--compression: 'zip' is not allowed; allowed: one of none, lzw, deflate"},
        {{"convert", "--jobs", "0", in, out},
         "--jobs: '0' is not allowed; allowed: an integer from 1 to 64"},
        {{"convert", in, out, "--quality"}, "--quality needs a value: an integer from 0 to 100"},
        {{"convert", "--quality", "150", in, out},
         "--quality: '150' is not allowed; allowed: an integer from 0 to 100"},
        {{"convert", "--sampling", "420", in, out},
         "--sampling: '420' is not allowed; allowed: one of 444, 422, 411"},
        {{"convert", "--format", "png", in, out},
         "convert: --format names the outputs of a batch into a folder; here the output's "
         "extension says it"},
        {{"apply", "equalize", "--color-space", "lab", in, out},
         "--color-space: 'lab' is not a choice; allowed: one of hsv, hsl"},
        {{"apply", "brightness-curve", "--color-space=cmyk", in, out},
         "--color-space: 'cmyk' is not a choice; allowed: one of hsv, hsl, rgb"},
        {{"apply", "copy", "--amount", "50", in, out},
         "--amount: copy has no Amount control, so no Amount and no mask"},
        {{"apply", "negative", "--amount2", "50", in, out},
         "--amount2 is the strength where a mask is white; it needs --mask"},
        {{"apply", "negative", "--amount", "120", in, out},
         "--amount: '120' is not allowed; allowed: a percentage from 0 to 100"},
        {{"apply", "negative", "--mask", in, in, out},
         "" + in + ": --mask must be a gray picture of the input's size, 40 x 30; this is a "
                   "color picture of 40 x 30"},
        {{"apply", "negative", in}, "apply negative: give an input and an output, or inputs "
                                    "and a folder"},
        {{"histogram", "--channel", "alpha", in},
         "--channel: 'alpha' is not allowed; allowed: one of gray, red, green, blue, average, "
         "luminance, hsv-hue, hsv-saturation, value, hsl-hue, hsl-saturation, lightness"},
        {{"list", "extra"}, "list takes no files; allowed: --markdown"},
    };
    for (const Case& c : cases) {
        const Outcome run = Cmd(c.args);
        EXPECT_EQ(run.status, 100) << c.message;
        EXPECT_EQ(run.err, "lumivue-cli: " + c.message + "\n");
        EXPECT_FALSE(Exists(out)) << c.message;
    }
    // The mask of another size is named with its size.
    const std::string small = Picture("small.tif", kImageGray, 20, 10);
    const Outcome wrong = Cmd({"apply", "negative", "--mask", small, in, out});
    EXPECT_EQ(wrong.status, 100);
    EXPECT_EQ(wrong.err, "lumivue-cli: " + small +
                             ": --mask must be a gray picture of the input's size, 40 x 30; "
                             "this is a gray picture of 20 x 10\n");
    (void)gray;
}

// A failure names the file it is about, with the program's message and the
// system's or the codec's reason, and exits with the error's code.
TEST_F(Cli, FailuresNameTheirFileAndExitWithTheirCode)
{
    const std::string in = Picture("in.png", kImageColor, 40, 30);
    struct Case {
        std::initializer_list<std::string> args;
        int status;
        std::string message;
    };
    const std::string missing = dir_ / "missing.tif";
    const std::string nowhere = dir_ / "no-such-dir/out.tif";
    const std::string badCurve = File("bad.crv", "Curve 1.0\nnonsense\n");
    const std::string noCurve = dir_ / "none.crv";
    const std::string noMask = dir_ / "none-mask.tif";
    const std::string gif = dir_ / "colour.gif";
    const std::string odd = dir_ / "out.xyz";
    const Case cases[] = {
        {{"convert", in, nowhere},
         57,
         nowhere + ": Problem writing TIFF file (No such file or directory)"},
        {{"convert", missing, dir_ / "x.png"},
         56,
         missing + ": Problem reading TIFF file (No such file or directory)"},
        {{"apply", "brightness-curve", "--curve", noCurve, in, dir_ / "y.png"},
         4,
         noCurve + ": Cannot open file (No such file or directory)"},
        {{"apply", "brightness-curve", "--curve", badCurve, in, dir_ / "y.png"},
         16,
         badCurve + ": Illegal curve file"},
        {{"apply", "negative", "--mask", noMask, in, dir_ / "y.png"},
         56,
         noMask + ": Problem reading TIFF file (No such file or directory)"},
        {{"convert", in, gif}, 55, gif + ": Only binary or grayscale images can be saved in GIF "
                                         "format"},
        {{"convert", in, odd}, 71, odd + ": Unknown file type"},
        {{"info", dir_ / "notes.txt"}, 71, dir_ / "notes.txt" + std::string(": Unknown file type")},
    };
    for (const Case& c : cases) {
        const Outcome run = Cmd(c.args);
        EXPECT_EQ(run.status, c.status) << c.message;
        EXPECT_EQ(run.err, "lumivue-cli: " + c.message + "\n");
    }
    EXPECT_FALSE(Exists(dir_ / "y.png"));
    EXPECT_FALSE(Exists(gif));

    // A codec's own reason comes after the program's message.
    const std::string fake = File("fake.png", std::string("not a picture at all, honestly"));
    const Outcome info = Cmd({"info", fake});
    EXPECT_EQ(info.status, 48);
    EXPECT_EQ(info.err.rfind("lumivue-cli: " + fake + ": Problem reading PNG file (", 0), 0u)
        << info.err;
}

TEST_F(Cli, CommandsDoTheirWork)
{
    const std::string in = Picture("in.tif", kImageColor, 40, 30);
    const Outcome info = Cmd({"info", in});
    EXPECT_EQ(info.status, 0);
    // The test card carries 300 dpi.
    EXPECT_EQ(info.out, in + ": Color Image, 40 x 30 pixels, 300.00 dpi, TIFF\n");

    // apply negative equals the negative command, and half strength lies
    // half way.
    const std::string a = dir_ / "a.png", b = dir_ / "b.png", half = dir_ / "half.png";
    EXPECT_EQ(Cmd({"negative", in, a}).status, 0);
    EXPECT_EQ(Cmd({"apply", "negative", in, b}).status, 0);
    EXPECT_EQ(test::Contents(a), test::Contents(b));
    EXPECT_EQ(Cmd({"apply", "negative", "--amount=50", in, half}).status, 0);
    Image source, halfway;
    ASSERT_EQ(ReadImageFile(in, kTypeTiff, source, false), 0);
    ASSERT_EQ(ReadImageFile(half, kTypePng, halfway, false), 0);
    const int32_t level = source.rows[10][10 * 3];
    EXPECT_NEAR(halfway.rows[10][10 * 3], (level + (255 - level)) / 2, 1);

    // A mask: black keeps the input (--amount 0 by default), white takes
    // the result.
    const std::string mask = Picture("mask.tif", kImageGray, 40, 30);
    EXPECT_EQ(Cmd({"apply", "negative", "--mask", mask, "--amount2", "100", in, dir_ / "m.tif"})
                  .status,
              0);

    // A curve from a file, in RGB: the inverting curve is the negative.
    Curve invert;
    invert.count = 2;
    invert.x[0] = 0, invert.y[0] = 255, invert.x[1] = 255, invert.y[1] = 0;
    invert.style = kCurveLinear;
    const std::string crv = dir_ / "invert.crv";
    ASSERT_EQ(CurveWrite(crv, invert), 0);
    const std::string c = dir_ / "c.png";
    EXPECT_EQ(
        Cmd({"apply", "brightness-curve", "--curve", crv, "--color-space", "rgb", in, c}).status,
        0);
    EXPECT_EQ(test::Contents(a), test::Contents(c));

    // A batch into a folder: the outputs keep their inputs' names.
    const std::string folder = dir_ / "out";
    std::filesystem::create_directory(folder);
    const std::string in2 = Picture("two.bmp", kImageGray, 16, 16);
    const Outcome batch = Cmd({"convert", in, in2, folder, "--format", "png"});
    EXPECT_EQ(batch.status, 0);
    EXPECT_EQ(batch.out,
              in + " -> " + folder + "/in.png\n" + in2 + " -> " + folder + "/two.png\n");
    EXPECT_TRUE(Exists(folder + "/two.png"));
    // Two inputs of one name would clobber each other: refused at once.
    const std::string sub = dir_ / "sub";
    std::filesystem::create_directory(sub);
    const std::string twin = sub + "/in.tif";
    std::filesystem::copy_file(in, twin);
    const Outcome clash = Cmd({"convert", in, twin, folder});
    EXPECT_EQ(clash.status, 100);
    EXPECT_EQ(clash.err, "lumivue-cli: convert: " + in + " and " + twin +
                             " would both be written to " + folder + "/in.tif\n");

    // Side by side, the same files, and the first failure in the order
    // given decides the status.
    const std::string one = dir_ / "one", two = dir_ / "two";
    std::filesystem::create_directory(one);
    std::filesystem::create_directory(two);
    const std::string bad = File("bad.png", "not a picture");
    const Outcome serial = Cmd({"negative", "--jobs", "1", in, bad, in2, one});
    const Outcome side = Cmd({"negative", "--jobs", "3", in, bad, in2, two});
    EXPECT_EQ(serial.status, 48);
    EXPECT_EQ(side.status, 48);
    EXPECT_EQ(test::Contents(one + "/in.tif"), test::Contents(two + "/in.tif"));
    EXPECT_EQ(test::Contents(one + "/two.bmp"), test::Contents(two + "/two.bmp"));
    EXPECT_NE(side.err.find(bad + ": Problem reading PNG file"), std::string::npos);

    const Outcome help = Cmd({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("hsl-saturation"), std::string::npos);
    EXPECT_EQ(Cmd({"version"}).status, 0);
}

TEST_F(Cli, TiffIsPackedLosslesslyWhenAsked)
{
    const std::string in = Picture("in.tif", kImageColor, 300, 200);
    Image source;
    ASSERT_EQ(ReadImageFile(in, kTypeTiff, source, false), 0);
    for (const char* compression : {"lzw", "deflate"}) {
        const std::string out = (dir_.path / (std::string(compression) + ".tif")).string();
        ASSERT_EQ(Cmd({"convert", "--compression", compression, in, out}).status, 0);
        EXPECT_LT(std::filesystem::file_size(out), std::filesystem::file_size(in) / 2)
            << compression;
        Image back;
        ASSERT_EQ(ReadImageFile(out, kTypeTiff, back, false), 0);
        EXPECT_EQ(test::Bytes(back), test::Bytes(source)) << compression;
    }
}

TEST_F(Cli, GeometryTakesCodesNamesAndCornersAtOnce)
{
    const std::string in = Picture("in.tif", kImageColor, 40, 30);
    const std::string byCode = dir_ / "code.png", byName = dir_ / "name.png";
    EXPECT_EQ(Cmd({"apply", "mirror-rotate", "--orientation", "207", in, byCode}).status, 0);
    EXPECT_EQ(Cmd({"apply", "mirror-rotate", "--orientation", "transverse", in, byName}).status, 0);
    EXPECT_EQ(test::Contents(byCode), test::Contents(byName));
    const Outcome help = Cmd({"apply", "mirror-rotate", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("copy (200), cw (201), 180 (202), ccw (203)"), std::string::npos);
    EXPECT_NE(help.out.find("for example: lumivue-cli apply mirror-rotate --orientation cw"),
              std::string::npos);

    // The box's rows count from the top; a reversed box crops the same.
    const std::string box = dir_ / "box.png", reversed = dir_ / "reversed.png";
    EXPECT_EQ(Cmd({"apply", "crop", "--box", "5,2,14,9", in, box}).status, 0);
    EXPECT_EQ(Cmd({"apply", "crop", "--box", "14,9,5,2", in, reversed}).status, 0);
    EXPECT_EQ(test::Contents(box), test::Contents(reversed));
    Image source, part;
    ASSERT_EQ(ReadImageFile(in, kTypeTiff, source, false), 0);
    ASSERT_EQ(ReadImageFile(box, kTypePng, part, false), 0);
    ASSERT_EQ(part.width * 100 + part.height, 1008);
    EXPECT_EQ(part.rows[7][0], source.rows[27][15]);  // the box's top left pixel

    const Outcome three = Cmd({"apply", "add-border", "--color", "0,0", in, box});
    EXPECT_EQ(three.status, 100);
    EXPECT_EQ(three.err, "lumivue-cli: --color: '0,0' is not 3 values; allowed: 3 integers "
                         "red,green,blue separated by commas, each as its own option allows\n");
}

TEST_F(Cli, HistogramReadsEveryChannel)
{
    // Pure red: hue at the end of the scale, full saturation, value 255,
    // lightness 127 (half of 255, truncated).
    Image red;
    ASSERT_EQ(ImageAlloc(red, kImageColor, 8, 4, 72.0), 0);
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 8; ++x)
            red.rows[y][x * 3] = 0, red.rows[y][x * 3 + 1] = 0, red.rows[y][x * 3 + 2] = 255;
    const std::string path = dir_ / "red.png";
    ASSERT_EQ(WriteImageFile(path, SaveFilterFromName(path), red, SaveOptions()), 0);
    auto binOf = [&](const char* channel) {
        const Outcome run = Cmd({"histogram", path, "--channel", channel});
        EXPECT_EQ(run.status, 0) << channel << run.err;
        // "peak 32" then 256 lines; the one full bin is the answer.
        for (int32_t level = 0; level < 256; ++level)
            if (run.out.find("\n" + std::to_string(level) + " 32\n") != std::string::npos)
                return level;
        return -1;
    };
    EXPECT_EQ(binOf("red"), 255);
    EXPECT_EQ(binOf("green"), 0);
    EXPECT_EQ(binOf("luminance"), 76);
    EXPECT_EQ(binOf("average"), 85);
    EXPECT_EQ(binOf("hsv-hue"), 255);
    EXPECT_EQ(binOf("hsl-hue"), 255);
    EXPECT_EQ(binOf("hsv-saturation"), 255);
    EXPECT_EQ(binOf("hsl-saturation"), 255);
    EXPECT_EQ(binOf("value"), 255);
    EXPECT_EQ(binOf("lightness"), 127);
    const Outcome wrong = Cmd({"histogram", path, "--channel", "gray"});
    EXPECT_EQ(wrong.status, 14);
    EXPECT_EQ(wrong.err, "lumivue-cli: " + path +
                             ": a color picture has no channel gray; luminance is its "
                             "brightness\n");
}

// An interruption is Cancel: the save stops at a row, its temporary goes,
// the old file stays, and the command exits 11.
TEST_F(Cli, SigtermDuringASaveLeavesTheOldFileAndNoTemporary)
{
    Image big;
    ASSERT_EQ(MakeTestCard(big, kImageColor, 300, 150), 0);
    const std::string in = dir_ / "in.tif";
    ASSERT_EQ(WriteImageFile(in, kSaveTiff, big, SaveOptions()), 0);
    const std::string folder = dir_ / "out";
    std::filesystem::create_directory(folder);
    const std::string out = folder + "/out.png";
    const std::string old = "the old picture";
    File("out/out.png", old);

    // Each row a little slower, so that the save is still running.
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::setenv("LUMIVUE_SLOW_JOBS", "10", 1);
        ::freopen("/dev/null", "w", stderr);
        ::execl(LUMIVUE_CLI, LUMIVUE_CLI, "convert", in.c_str(), out.c_str(),
                static_cast<char*>(nullptr));
        ::_exit(127);
    }
    // Wait for the temporary to appear beside the output, then interrupt.
    bool saving = false;
    for (int32_t wait = 0; wait < 2000 && !saving; ++wait) {
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            saving = saving || entry.path().extension() == ".tmp";
        if (!saving) ::usleep(5000);
    }
    EXPECT_TRUE(saving);
    ::kill(child, SIGTERM);
    int raw = 0;
    ASSERT_EQ(::waitpid(child, &raw, 0), child);
    ASSERT_TRUE(WIFEXITED(raw));
    EXPECT_EQ(WEXITSTATUS(raw), 11);
    EXPECT_EQ(test::Contents(out), old);
    size_t entries = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        (void)entry;
        ++entries;
    }
    EXPECT_EQ(entries, 1u);
}

// A pipe or a folder given as a picture is refused at once.
TEST_F(Cli, OnlyRegularFilesAreRead)
{
    const std::string pipe = dir_ / "pipe.png";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const Outcome run = Cmd({"convert", pipe, dir_ / "x.tif"});
    EXPECT_EQ(run.status, 4);
    EXPECT_EQ(run.err, "lumivue-cli: " + pipe + ": Cannot open file (a named pipe, not a file)\n");
    const std::string folder = dir_ / "folder.tif";
    std::filesystem::create_directory(folder);
    const Outcome dir = Cmd({"info", folder});
    EXPECT_EQ(dir.status, 4);
    EXPECT_EQ(dir.err, "lumivue-cli: " + folder + ": Cannot open file (Is a directory)\n");
}

// The reference in the docs is what the declarations say today.
TEST_F(Cli, TheReferenceInTheDocsIsUpToDate)
{
    const Outcome run = Cmd({"list", "--markdown"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, test::Contents(std::string(LUMIVUE_SOURCE_DIR) +
                                      "/docs/transformations.md"))
        << "run: build/lumivue-cli list --markdown > docs/transformations.md";
    const Outcome plain = Cmd({"list"});
    EXPECT_NE(plain.out.find("equalize  (Equalize)"), std::string::npos);
    EXPECT_NE(plain.out.find("    --color-space CHOICE  for colour, what is flattened"),
              std::string::npos);
}

TEST_F(Cli, CameraFilesStandAsTakenAndKeepTheirMetadata)
{
    const std::string camera = std::string(LUMIVUE_SOURCE_DIR) +
                               "/../shared/testdata/extra/photos_jpeg/camera_chandelier_orient6.jpg";
    if (!std::filesystem::exists(camera)) GTEST_SKIP() << "no test pictures";
    const Outcome info = Cmd({"info", camera});
    EXPECT_EQ(info.status, 0);
    EXPECT_EQ(info.out, camera +
                            ": Color Image, 1536 x 2048 pixels, 200.00 dpi, JPEG\n"
                            "  camera: Canon PowerShot SX60 HS\n"
                            "  taken: 2015:02:09 22:47:44\n"
                            "  exposure: 1/60 s, F5.6, ISO 800\n"
                            "  orientation: 6, turned on opening\n");
    const std::string standing = dir_ / "standing.png", stored = dir_ / "stored.png";
    EXPECT_EQ(Cmd({"convert", camera, standing}).status, 0);
    EXPECT_EQ(Cmd({"convert", "--no-orient", camera, stored}).status, 0);
    // The saved file stands upright and says so; the camera stays.
    EXPECT_EQ(Cmd({"info", standing}).out, standing +
                                               ": Color Image, 1536 x 2048 pixels, 200.00 dpi, "
                                               "PNG\n  camera: Canon PowerShot SX60 HS\n"
                                               "  taken: 2015:02:09 22:47:44\n"
                                               "  exposure: 1/60 s, F5.6, ISO 800\n");
    Image a, b;
    ASSERT_EQ(ReadImageFile(stored, kTypePng, a, false), 0);
    EXPECT_EQ(a.width * 10000 + a.height, 2048 * 10000 + 1536);
}

}  // namespace
}  // namespace lv
