#include "shell/paramfile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "shell/errors.h"

namespace lv {
namespace {

namespace fs = std::filesystem;

class ParamFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        static int counter = 0;
        dir_ = fs::temp_directory_path() /
               ("lv_param_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
        fs::create_directories(dir_);
    }
    void TearDown() override
    {
        std::error_code error;
        fs::permissions(dir_, fs::perms::owner_all, fs::perm_options::add, error);
        fs::remove_all(dir_, error);
    }
    std::string Path(const std::string& name) const { return (dir_ / name).string(); }
    std::string Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }
    std::string Contents(const std::string& name) const
    {
        std::ifstream in(Path(name), std::ios::binary);
        return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    }
    size_t EntryCount() const
    {
        return static_cast<size_t>(std::distance(fs::directory_iterator(dir_), {}));
    }
    int32_t Open(const std::string& bytes)
    {
        return ParamReadOpen(reader_, Write("t.crv", bytes), "Curve", kErrCurveFile);
    }

    fs::path dir_;
    ParamReader reader_;
};

TEST_F(ParamFileTest, HeaderMustBeExactlyNameAndVersion)
{
    EXPECT_EQ(ParamReadOpen(reader_, Path("missing.crv"), "Curve", kErrCurveFile), kErrCannotOpen);
    EXPECT_EQ(Open(""), kErrCurveFile);
    EXPECT_EQ(Open("\r\n\r\n"), kErrCurveFile);
    EXPECT_EQ(Open("Curve 2.0\r\n"), kErrCurveFile);
    EXPECT_EQ(Open("Curve 1.0 extra\r\n"), kErrCurveFile);
    EXPECT_EQ(Open("Curve\r\n"), kErrCurveFile);
    EXPECT_EQ(Open("ColorCurves 1.0\r\n"), kErrCurveFile);
    EXPECT_EQ(Open("curve 1.0\r\n"), kErrCurveFile);
    EXPECT_EQ(Open(std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)), kErrCurveFile);
    EXPECT_EQ(Open(std::string(100000, 'C') + "\r\nCurve 1.0\r\n"), kErrCurveFile);
    EXPECT_EQ(Open("Curve 1.0"), kOk);  // header with no line end
    EXPECT_EQ(Open("\r\n  Curve\t1.0  \n"), kOk);
}

TEST_F(ParamFileTest, StatementsComeAsTokensUntilEndOfFile)
{
    ASSERT_EQ(Open("Curve 1.0\r\nnpts 2\r\n\r\n   \r\nstyle spline\npoint 0 10 20\r\npoi"), kOk);
    std::vector<std::string> t;
    using Tokens = std::vector<std::string>;
    ASSERT_EQ(ParamReadLine(reader_, t), kOk);
    EXPECT_EQ(t, (Tokens{"npts", "2"}));
    ASSERT_EQ(ParamReadLine(reader_, t), kOk);
    EXPECT_EQ(t, (Tokens{"style", "spline"}));
    ASSERT_EQ(ParamReadLine(reader_, t), kOk);
    EXPECT_EQ(t, (Tokens{"point", "0", "10", "20"}));
    ASSERT_EQ(ParamReadLine(reader_, t), kOk);  // the cut-off last line still comes
    EXPECT_EQ(t, (Tokens{"poi"}));
    EXPECT_EQ(ParamReadLine(reader_, t), kErrEndOfFile);
    EXPECT_TRUE(t.empty());
    EXPECT_EQ(ParamReadLine(reader_, t), kErrEndOfFile);

    ParamReader unopened;
    EXPECT_EQ(ParamReadLine(unopened, t), kErrReading);
}

TEST_F(ParamFileTest, WriterProducesCrLfLinesThatReadBack)
{
    {
        ParamWriter writer;
        ASSERT_EQ(ParamWriteOpen(writer, Path("out.crv"), "Curve"), kOk);
        EXPECT_EQ(ParamWrite(writer, "npts %d", 2), kOk);
        EXPECT_EQ(ParamWrite(writer, "name \"%s\"", "a b"), kOk);
        EXPECT_EQ(ParamWriteText(writer, "end"), kOk);
        EXPECT_FALSE(FileExists(Path("out.crv")));  // nothing visible before the commit
        EXPECT_EQ(ParamWriteCommit(writer), kOk);
    }
    EXPECT_EQ(Contents("out.crv"), "Curve 1.0\r\nnpts 2\r\nname \"a b\"\r\nend\r\n");
    EXPECT_EQ(EntryCount(), 1u);

    ASSERT_EQ(ParamReadOpen(reader_, Path("out.crv"), "Curve", kErrCurveFile), kOk);
    std::vector<std::string> t;
    ASSERT_EQ(ParamReadLine(reader_, t), kOk);
    ASSERT_EQ(ParamReadLine(reader_, t), kOk);
    EXPECT_EQ(t, (std::vector<std::string>{"name", "a b"}));
}

TEST_F(ParamFileTest, UncommittedOrFailedWriterLeavesOldFileAlone)
{
    Write("keep.crv", "Curve 1.0\r\nold\r\n");
    {
        ParamWriter writer;
        ASSERT_EQ(ParamWriteOpen(writer, Path("keep.crv"), "Curve"), kOk);
        EXPECT_EQ(ParamWrite(writer, "npts %d", 9), kOk);
        EXPECT_EQ(EntryCount(), 2u);  // the old file and the temporary one
    }
    EXPECT_EQ(Contents("keep.crv"), "Curve 1.0\r\nold\r\n");
    EXPECT_EQ(EntryCount(), 1u);

    // A target that cannot be replaced (a folder): refused before anything
    // is made.
    fs::create_directories(dir_ / "taken.crv" / "inside");
    {
        ParamWriter writer;
        EXPECT_EQ(ParamWriteOpen(writer, Path("taken.crv"), "Curve"), kErrCannotCreate);
        EXPECT_EQ(ErrorDetail(), "Is a directory");
        EXPECT_EQ(EntryCount(), 2u);                             // keep.crv and the folder
        EXPECT_EQ(ParamWriteCommit(writer), kErrCannotCreate);  // nothing to put
    }

    ParamWriter nowhere;
    EXPECT_EQ(ParamWriteOpen(nowhere, Path("no/such/dir.crv"), "Curve"), kErrCannotCreate);
    EXPECT_EQ(ParamWrite(nowhere, "npts %d", 1), kErrCannotCreate);
    EXPECT_EQ(ParamWriteCommit(nowhere), kErrCannotCreate);

    // Access denied (not meaningful when the tests run as root).
    if (::geteuid() != 0) {
        fs::create_directories(dir_ / "locked");
        fs::permissions(dir_ / "locked", fs::perms::owner_read | fs::perms::owner_exec);
        ParamWriter denied;
        EXPECT_EQ(ParamWriteOpen(denied, Path("locked/x.crv"), "Curve"), kErrReadOnlyDisk);
        fs::permissions(dir_ / "locked", fs::perms::owner_all);
    }
}

}  // namespace
}  // namespace lv
