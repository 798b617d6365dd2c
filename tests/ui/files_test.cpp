// Open, Save As, the JPEG save and Close in the editor, with the file
// dialogs and questions answered by the test.
#include <QMdiArea>
#include <QTemporaryDir>
#include <QtTest>

#include "files/formats.h"
#include "files/ui/file_commands.h"
#include "image/display.h"
#include "image/ui/image_window.h"
#include "shell/commands.h"
#include "shell/errors.h"
#include "shell/preferences.h"
#include "shell/tables.h"
#include "shell/ui/main_window.h"
#include "shell/ui/message_box.h"
#include "shell/ui/metrics.h"
#include "shell/ui/qt_frontend.h"
#include "shell/ui/workspace.h"
#include "support/editor_fixture.h"
#include "synthesis/test_card.h"

using namespace lv;

class FilesTest : public QObject {
    Q_OBJECT

private:
    test::EditorFixture fx_;
    std::unique_ptr<MainWindow>& frame_ = fx_.frame;
    QTemporaryDir dir_;
    QStringList& boxes_ = fx_.boxes;
    QList<int32_t>& answers_ = fx_.answers;
    QList<QStringList> dialogAnswers_;  // names the file dialog returns, in order
    QList<int32_t> dialogFilters_;      // the filter each dialog returns
    int dialogs_ = 0;

    QString Path(const char* name) const { return dir_.filePath(QString::fromLatin1(name)); }

    void WriteCard(const QString& path, int32_t kind)
    {
        Image card;
        QCOMPARE(MakeTestCard(card, kind, 120, 80), 0);
        QCOMPARE(WriteImageFile(path.toStdString(), SaveFilterFromName(path.toStdString()), card,
                                SaveOptions()),
                 0);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(dir_.isValid());
        fx_.StartEngine();
        SetFileDialogHook([this](const QString&, int32_t& filter) {
            ++dialogs_;
            if (!dialogFilters_.isEmpty()) filter = dialogFilters_.takeFirst();
            return dialogAnswers_.isEmpty() ? QStringList() : dialogAnswers_.takeFirst();
        });
    }

    void init()
    {
        dialogAnswers_.clear();
        dialogFilters_.clear();
        dialogs_ = 0;
        CurrentState() = SessionState();
        QVERIFY(fx_.OpenFrame());
    }

    void cleanup()
    {
        fx_.CloseFrame();
        SetJpegDialogHook(nullptr);
    }

    void openFromTheDialogAndReopenQuestions()
    {
        const QString png = Path("card.png");
        WriteCard(png, kImageColor);
        dialogAnswers_ = {{png}};
        QVERIFY(frame_->Dispatch(kCmdOpen));
        ImageSubWindow* w = frame_->ActiveImage();
        QVERIFY(w);
        QCOMPARE(w->windowTitle(), png + " (1:1)");
        QCOMPARE(w->record().fileType, int32_t{kTypePng});
        QCOMPARE(QString::fromStdString(CurrentState().recentFiles[0]), png);

        // The same file again, unmodified: No activates the window that is open.
        answers_ = {kAnswerNo};
        QCOMPARE(FileOpen(frame_.get(), png, 1), 0);
        QCOMPARE(frame_->workspace()->subWindowList().size(), 1);
        QVERIFY(boxes_.last().contains("File already open but not modified"));

        // An unknown extension under All Files: "Unknown file type" and the
        // dialog again, then Cancel.
        dialogAnswers_ = {{Path("notes.txt")}};
        dialogFilters_ = {kTypeAll};
        QCOMPARE(FileOpen(frame_.get(), QString(), 1), 0);
        QCOMPARE(dialogs_, 3);
        QVERIFY(boxes_.contains("Error|Unknown file type"));

        // A missing file named directly: its own box, and it leaves the list.
        CurrentState().recentFiles[0] = Path("gone.tif").toStdString();
        QCOMPARE(FileOpen(frame_.get(), Path("gone.tif"), 1), 0);
        QCOMPARE(boxes_.last(), "Error|File does not exist: " + Path("gone.tif"));
        QVERIFY(CurrentState().recentFiles[0].empty());
    }

    void saveAsChecksExtensionsKindsAndNames()
    {
        const QString tif = Path("gray.tif");
        WriteCard(tif, kImageGray);
        QCOMPARE(FileOpen(frame_.get(), tif, 1), 0);
        ImageSubWindow* w = frame_->ActiveImage();
        QVERIFY(w);

        // A name without an extension gets the filter's.
        dialogAnswers_ = {{Path("copy")}};
        dialogFilters_ = {kSavePng};
        QCOMPARE(FileSaveAs(frame_.get(), w), 0);
        QVERIFY(QFile::exists(Path("copy.png")));
        QCOMPARE(w->record().fileName, Path("copy.png").toStdString());
        QCOMPARE(w->record().fileType, int32_t{kTypePng});

        // A wrong extension: the format's message, and the dialog again.
        dialogAnswers_ = {{Path("x.jpg")}, {}};
        dialogFilters_ = {kSaveTiff, kSaveTiff};
        QCOMPARE(FileSaveAs(frame_.get(), w), int32_t{kErrAborted});
        QVERIFY(boxes_.contains("Error|TIFF files must have an extension of .tif or .tiff"));

        // The name of another open window: error 78, and the dialog again.
        QCOMPARE(FileOpen(frame_.get(), tif, 1), 0);
        ImageSubWindow* other = frame_->ActiveImage();
        dialogAnswers_ = {{Path("copy.png")}, {}};
        dialogFilters_ = {kSavePng, kSavePng};
        QCOMPARE(FileSaveAs(frame_.get(), other), int32_t{kErrAborted});
        QVERIFY(boxes_.contains("Error|File of same name already open"));

        // An existing file asks first; No goes back to the dialog.
        answers_ = {kAnswerNo};
        dialogAnswers_ = {{tif}, {}};
        dialogFilters_ = {kSaveTiff, kSaveTiff};
        QCOMPARE(FileSaveAs(frame_.get(), other), int32_t{kErrAborted});
        QVERIFY(boxes_.contains("|Replace existing file: " + tif + "?"));
    }

    void colourAsGifIsRefusedAndJpegReportsItsStatistics()
    {
        const QString tif = Path("colour.tif");
        WriteCard(tif, kImageColor);
        QCOMPARE(FileOpen(frame_.get(), tif, 1), 0);
        ImageSubWindow* w = frame_->ActiveImage();
        dialogAnswers_ = {{Path("colour.gif")}};
        dialogFilters_ = {kSaveGif};
        QCOMPARE(FileSaveAs(frame_.get(), w), 55);
        QVERIFY(!QFile::exists(Path("colour.gif")));

        SetJpegDialogHook([](int32_t& quality, int32_t& sampling) {
            quality = 80;
            sampling = 1;
            return true;
        });
        dialogAnswers_ = {{Path("colour.jpg")}};
        dialogFilters_ = {kSaveJpeg};
        QCOMPARE(FileSaveAs(frame_.get(), w), 0);
        QVERIFY(QFile::exists(Path("colour.jpg")));
        QVERIFY(boxes_.last().startsWith("JPEG File Save Statistics|File name\n  " +
                                         Path("colour.jpg") + "\n\nQuality\n  80\n"));
        QCOMPARE(CurrentState().jpegQuality[0], 80);
        QCOMPARE(CurrentState().jpegQuality[1], 1);
    }

    void closeAsksAboutAModifiedPicture()
    {
        const QString tif = Path("close.tif");
        WriteCard(tif, kImageGray);
        QCOMPARE(FileOpen(frame_.get(), tif, 1), 0);
        ImageSubWindow* w = frame_->ActiveImage();
        w->record().modified = true;
        answers_ = {kAnswerCancel};
        QVERIFY(frame_->Dispatch(kCmdClose));
        QCOMPARE(frame_->workspace()->subWindowList().size(), 1);
        QCOMPARE(boxes_.last(), QStringLiteral("Warning|Save modified file?"));

        // Revert takes the file back and clears the modified flag.
        w->record().image.rows[0][0] ^= 0xFF;
        QVERIFY(frame_->Dispatch(kCmdRevert));
        QVERIFY(!w->record().modified);

        answers_ = {kAnswerNo};
        w->record().modified = true;
        QVERIFY(frame_->Dispatch(kCmdClose));
        QCOMPARE(frame_->workspace()->subWindowList().size(), 0);
    }
};

QTEST_MAIN(FilesTest)
#include "files_test.moc"
