// The File commands of the editor: Open, Save, Save As, Close, Revert and
// the recent files, with their dialogs and questions. The reading and
// writing itself is the engine's (files/formats.h).
#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace lv {

class MainWindow;
class ImageSubWindow;

// Opens a file (FileOpen): `path` empty shows the File Open dialog; `type` is
// a FileType, 1 to settle it by the name's extension, or -1 for the same with
// an immediate refusal of an unknown one. Result 0 or an error code, which
// the caller reports.
int32_t FileOpen(MainWindow* frame, const QString& path, int32_t type);
int32_t FileSave(MainWindow* frame, ImageSubWindow* window);
// 11 when the dialog is cancelled, which the caller does not report.
int32_t FileSaveAs(MainWindow* frame, ImageSubWindow* window);
// File > Close: the save question, then the window goes.
int32_t FileClose(MainWindow* frame, ImageSubWindow* window);
int32_t FileRevert(MainWindow* frame, ImageSubWindow* window);

// Test hooks standing for the file dialogs: given the dialog's title and the
// filter chosen at the start, they return the names chosen (none for
// Cancel) and may change the filter.
using FileDialogHook = std::function<QStringList(const QString& title, int32_t& filter)>;
void SetFileDialogHook(FileDialogHook hook);
// Stands for the JPEG quality dialog: returns false for Cancel.
using JpegDialogHook = std::function<bool(int32_t& quality, int32_t& sampling)>;
void SetJpegDialogHook(JpegDialogHook hook);

}  // namespace lv
