#include "files/ui/file_commands.h"

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMdiArea>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include "files/formats.h"
#include "files/metadata.h"
#include "image/display.h"
#include "image/ui/image_window.h"
#include "image/window.h"
#include "shell/errors.h"
#include "shell/frontend.h"
#include "shell/preferences.h"
#include "shell/text.h"
#include "shell/ui/main_window.h"
#include "shell/ui/metrics.h"
#include "shell/ui/workspace.h"

namespace lv {

namespace {

FileDialogHook gDialogHook;
JpegDialogHook gJpegHook;
bool gFirstDialog = true;
QString gLastDirectory;
int32_t gLastSaveFilter = -1;

QString Q(const std::string& s) { return QString::fromStdString(s); }
std::string S(const QString& s) { return s.toStdString(); }

// "TIFF (*.tif *.tiff)": a filter as the dialog writes it.
QString FilterText(const char* name, const char* patterns)
{
    return QStringLiteral("%1 (%2)").arg(QString::fromLatin1(name),
                                         QString::fromLatin1(patterns).replace(';', ' '));
}

QString StartDirectory()
{
    const std::string& startup = CurrentPreferences().startupDirectory;
    if (gFirstDialog && !startup.empty()) return Q(startup);
    return gLastDirectory.isEmpty() ? QDir::currentPath() : gLastDirectory;
}

// Shows the File Open or File Save dialog; `filter` is a FileType or
// SaveFilter position and comes back as chosen. A save offers `suggested`,
// the picture's own name in its own folder, when it has one.
QStringList RunDialog(MainWindow* frame, bool save, int32_t& filter,
                      const QString& suggested = QString())
{
    const QString title = save ? QStringLiteral("File Save") : QStringLiteral("File Open");
    QStringList names;
    if (gDialogHook) {
        names = gDialogHook(title, filter);
    } else {
        QStringList filters;
        if (save) {
            for (const SaveFilterInfo& f : SaveFilters())
                filters << FilterText(f.filterName, f.patterns);
        } else {
            for (const FileTypeInfo& t : FileTypes())
                filters << FilterText(t.filterName, t.patterns);
        }
        QFileDialog dialog(frame, title, StartDirectory());
        dialog.setNameFilters(filters);
        dialog.selectNameFilter(filters.value(std::clamp(filter, 1, int(filters.size())) - 1));
        if (save && !suggested.isEmpty()) {
            dialog.setDirectory(QFileInfo(suggested).absolutePath());
            dialog.selectFile(QFileInfo(suggested).fileName());
        }
        dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
        dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFiles);
        // The program asks its own question about replacing a file.
        dialog.setOption(QFileDialog::DontConfirmOverwrite, true);
        if (dialog.exec() == QDialog::Accepted) {
            names = dialog.selectedFiles();
            filter = static_cast<int32_t>(filters.indexOf(dialog.selectedNameFilter())) + 1;
        }
        gLastDirectory = dialog.directory().absolutePath();
    }
    gFirstDialog = false;
    if (!names.isEmpty()) gLastDirectory = QFileInfo(names.first()).absolutePath();
    return names;
}

// CheckAlreadyOpen: true when the open should stop here.
bool CheckAlreadyOpen(MainWindow* frame, const std::string& path)
{
    for (ImageSubWindow* w : ImageWindows(frame->workspace())) {
        ImageWindow& r = w->record();
        if (r.windowKind != kWindowImage || !StringEqualNoCase(r.fileName, path)) continue;
        if (!r.modified) {
            switch (MessageBoxShow("", kBoxYesNoCancel,
                                   "File already open but not modified: do you want to reopen "
                                   "it?")) {
            case kAnswerYes: delete w; return false;
            case kAnswerNo: frame->workspace()->setActiveSubWindow(w); return true;
            default: return true;
            }
        }
        if (MessageBoxShow("", kBoxYesNoCancel,
                           "File already open and modified\nDo you want to reopen it (changes "
                           "will be lost)?") == kAnswerYes) {
            delete w;
            return false;
        }
        return true;
    }
    return false;
}

// CheckOverwrite: 0 to go on.
int32_t CheckOverwrite(MainWindow* frame, const std::string& path, ImageSubWindow* window)
{
    for (ImageSubWindow* w : ImageWindows(frame->workspace())) {
        if (w == window || w->record().windowKind != kWindowImage) continue;
        if (StringEqualNoCase(w->record().fileName, path)) {
            ReportError(78);
            return 78;
        }
    }
    if (FileExists(path) &&
        MessageBoxShow("", kBoxYesNo, FormatText("Replace existing file: %s?", path)) != kAnswerYes)
        return kErrAborted;
    return kOk;
}

// The JPEG quality dialog: false for Cancel.
bool AskJpegSettings(MainWindow* frame, int32_t kind, int32_t& quality, int32_t& sampling)
{
    if (gJpegHook) return gJpegHook(quality, sampling);
    QDialog dialog(frame);
    dialog.setWindowTitle(QStringLiteral("File Save (JPEG)"));
    dialog.setFont(Metrics().fontSystem);
    dialog.setFixedWidth(400);
    auto* label = new QLabel(QStringLiteral("Quality: %1").arg(quality));
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(0, 1024);
    slider->setValue(quality * 1024 / 100);
    int32_t chosen = quality;
    QObject::connect(slider, &QSlider::valueChanged, &dialog, [&](int value) {
        chosen = value * 100 / 1024;
        label->setText(QStringLiteral("Quality: %1").arg(chosen));
    });
    auto* samplingBox = new QComboBox;
    samplingBox->addItems(
        {QStringLiteral("4:4:4"), QStringLiteral("4:2:2"), QStringLiteral("4:1:1")});
    samplingBox->setCurrentIndex(std::clamp(sampling, 0, 2));
    auto* buttons = new QDialogButtonBox;
    buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
    buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    QPushButton* help = buttons->addButton(QStringLiteral("Help"), QDialogButtonBox::HelpRole);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    QObject::connect(help, &QPushButton::clicked, frame,
                     [frame] { frame->Dispatch(kCmdHelpContents); });
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(buttons);
    layout->addWidget(label);
    layout->addWidget(slider);
    if (kind == kImageColor) {
        auto* row = new QHBoxLayout;
        row->addWidget(new QLabel(QStringLiteral("Color Sampling:")));
        row->addWidget(samplingBox);
        layout->addLayout(row);
    }
    if (dialog.exec() != QDialog::Accepted) return false;
    quality = chosen;
    if (kind == kImageColor) sampling = samplingBox->currentIndex();
    return true;
}

// JPEGSave: the dialog, the write and the statistics. Failures are shown
// here and also returned.
int32_t JpegSave(MainWindow* frame, const std::string& path, const Image& image,
                 const PictureMetadata* metadata)
{
    if (image.kind != kImageGray && image.kind != kImageColor) return 24;
    SessionState& state = CurrentState();
    int32_t quality = state.jpegQuality[0], sampling = state.jpegQuality[1];
    if (!AskJpegSettings(frame, image.kind, quality, sampling)) return kErrAborted;
    state.jpegQuality[0] = quality;
    state.jpegQuality[1] = sampling;
    SaveOptions options;
    options.jpegQuality = quality;
    options.jpegSampling = sampling;
    options.metadata = metadata;
    const int32_t result = WriteImageFile(path, kSaveJpeg, image, options);
    if (result) {
        ReportError(result == kErrAborted ? kOk : result);
        return result;
    }
    int64_t fileSize = 0;
    File file;
    if (FileOpenRead(path, file) == kOk) FileSize(file, fileSize);
    if (fileSize == 0) fileSize = 1;
    const int64_t imageSize = int64_t{image.height} * image.stride;
    MessageBoxShow("JPEG File Save Statistics", kBoxOk,
                   FormatText("File name\n  %s\n\nQuality\n  %d\n\nImage size\n  %, bytes\n\nFile "
                              "size\n  %, bytes\n\nCompression Ratio\n  %2f",
                              path, quality, imageSize, fileSize,
                              static_cast<double>(imageSize) / static_cast<double>(fileSize)));
    return kOk;
}

int32_t RunWriter(MainWindow* frame, const std::string& path, int32_t filter, const Image& image,
                  const PictureMetadata* metadata)
{
    if (filter == kSaveJpeg) return JpegSave(frame, path, image, metadata);
    SaveOptions options;
    options.metadata = metadata;
    return WriteImageFile(path, filter, image, options);
}

// Reads a picture with its metadata, turned to stand as it was taken unless
// the preferences say otherwise.
int32_t ReadStanding(const std::string& path, int32_t type, Image& image,
                     std::shared_ptr<PictureMetadata>& metadata)
{
    if (int32_t code = ReadImageFile(path, type, image, true)) return code;
    metadata = std::make_shared<PictureMetadata>();
    if (int32_t code = MetadataRead(path, *metadata)) return code;
    if (CurrentPreferences().orientOnOpen)
        if (int32_t code = ApplyOrientation(image, metadata->orientation)) return code;
    if (metadata->Empty()) metadata.reset();
    return kOk;
}

// Opens one named file of a known type (steps 10 to 15).
int32_t OpenNamed(MainWindow* frame, std::string path, int32_t type, bool dialogEndedInDot)
{
    if (CheckAlreadyOpen(frame, path)) return kOk;
    const FileTypeInfo* info = FindFileType(type);
    if (!HasExtension(path) && info && info->defaultExtension)
        path = dialogEndedInDot ? path + "." : WithExtension(path, info->defaultExtension);
    if (!FileExists(path)) {
        MessageBoxShow("Error", kBoxOk, FormatText("File does not exist: %s", path));
        RecentRemove(CurrentState(), path);
        return kOk;
    }
    Image image;
    std::shared_ptr<PictureMetadata> metadata;
    if (int32_t code = ReadStanding(path, type, image, metadata)) return code;
    RecentAdd(CurrentState(), CurrentPreferences().recentCount, path);
    if (int32_t shown = frame->ShowNewImage(std::move(image), Q(path))) return shown;
    if (ImageSubWindow* w = frame->ActiveImage()) {
        w->record().fileType = type;
        w->record().metadata = std::move(metadata);
        w->UpdateTitle();
    }
    return kOk;
}

}  // namespace

void SetFileDialogHook(FileDialogHook hook) { gDialogHook = std::move(hook); }
void SetJpegDialogHook(JpegDialogHook hook) { gJpegHook = std::move(hook); }

int32_t FileOpen(MainWindow* frame, const QString& path, int32_t type)
{
    if (type == -1) {
        type = FileTypeFromName(S(path));
        if (type == -1) return kErrUnknownFileType;
    }
    if (!path.isEmpty()) {
        if (type == kTypeAll) type = FileTypeFromName(S(path));
        // The window's title and the recent list show the file's plain
        // absolute name, "/photos/a.jpg" for "../photos/./a.jpg".
        const QString plain = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
        if (type > 0) return OpenNamed(frame, S(plain), type, false);
        ReportError(kErrUnknownFileType);  // then the dialog comes up
    }
    int32_t filter = std::clamp(CurrentPreferences().defaultOpenFilter, 1, 10);
    for (;;) {
        const QStringList names = RunDialog(frame, false, filter);
        if (names.isEmpty()) return kOk;
        bool again = false;
        for (const QString& name : names) {
            int32_t chosen = filter;
            if (chosen == kTypeAll) chosen = FileTypeFromName(S(name));
            if (chosen <= 0) {
                ReportError(kErrUnknownFileType);
                again = true;
                break;
            }
            if (int32_t code = OpenNamed(frame, S(name), chosen, false)) return code;
        }
        if (!again) return kOk;
    }
}

int32_t FileSave(MainWindow* frame, ImageSubWindow* window)
{
    ImageWindow& r = window->record();
    const int32_t filter = SaveFilterOfType(r.fileType);
    if (r.fileName.empty() || filter == 0) return FileSaveAs(frame, window);
    if (int32_t code = CheckSaveKind(filter, r.image)) return code;
    const int32_t code = RunWriter(frame, r.fileName, filter, r.image, r.metadata.get());
    if (code == kOk) r.modified = false;
    return code;
}

int32_t FileSaveAs(MainWindow* frame, ImageSubWindow* window)
{
    ImageWindow& r = window->record();
    int32_t filter = SaveFilterOfType(r.fileType);
    if (filter == 0) filter = gLastSaveFilter;
    if (filter < 1) filter = std::clamp(CurrentPreferences().defaultSaveFilter, 1, 8);
    for (;;) {
        const QStringList names = RunDialog(frame, true, filter, Q(r.fileName));
        if (names.isEmpty()) return kErrAborted;
        const SaveFilterInfo* f = FindSaveFilter(filter);
        if (!f) return kErrUnknownFileType;
        std::string path = S(names.first());
        if (!HasExtension(path)) path = WithExtension(path, f->extension);
        if (!ExtensionFitsFilter(path, filter)) {
            MessageBoxShow("Error", kBoxOk, f->extensionMessage);
            continue;
        }
        // The kind is checked before anything touches the disk.
        if (int32_t code = CheckSaveKind(filter, r.image)) return code;
        if (CheckOverwrite(frame, path, window)) continue;
        if (int32_t code = RunWriter(frame, path, filter, r.image, r.metadata.get())) return code;
        gLastSaveFilter = filter;
        RecentAdd(CurrentState(), CurrentPreferences().recentCount, path);
        r.modified = false;
        r.fileName = path;
        r.fileType = f->typeAfterSaving;
        window->UpdateTitle();
        // A panel using the window hears of its new name.
        UsersNotifyRenamed(window->handle());
        return kOk;
    }
}

int32_t FileClose(MainWindow* frame, ImageSubWindow* window)
{
    (void)frame;
    // A window a panel is reading stays open, whichever way it is closed.
    if (const char* user = UserFindLock(window->handle())) {
        MessageBoxShow("Error", kBoxOk, FormatText("Window in use by %s - Cannot close", user));
        return kOk;
    }
    ImageWindow& r = window->record();
    if (CurrentPreferences().confirmClose && r.modified) {
        switch (MessageBoxShow("Warning", kBoxYesNoCancel, "Save modified file?")) {
        case kAnswerCancel: return kOk;
        case kAnswerYes:
            if (int32_t code = FileSave(frame, window)) return code == kErrAborted ? kOk : code;
            break;
        default: break;
        }
    }
    delete window;
    return kOk;
}

int32_t FileRevert(MainWindow* frame, ImageSubWindow* window)
{
    (void)frame;
    ImageWindow& r = window->record();
    if (r.fileName.empty()) return kOk;
    Image image;
    std::shared_ptr<PictureMetadata> metadata;
    if (int32_t code = ReadStanding(r.fileName, r.fileType, image, metadata)) return code;
    r.image = std::move(image);
    r.metadata = std::move(metadata);
    r.modified = false;
    UndoPurge(&r);
    ImageFree(r.display);
    const int32_t code = window->Rebuild(false);
    UsersNotifyChanged(window->handle());
    return code;
}

}  // namespace lv
