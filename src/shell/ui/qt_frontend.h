// The editor's front end: the engine's hooks served by Qt. The progress box
// lives in the workspace, message boxes are owned by it, and window
// handles are QObject addresses (see events.h).
#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <memory>

#include "shell/frontend.h"
#include "shell/ui/progress_box.h"

class QMdiArea;

namespace lv {

class QtFrontEnd : public FrontEnd {
public:
    explicit QtFrontEnd(QMdiArea* workspace);
    ~QtFrontEnd() override;
    QtFrontEnd(const QtFrontEnd&) = delete;
    QtFrontEnd& operator=(const QtFrontEnd&) = delete;

    void ProgressShow(const ProgressBox& box) override;
    void ProgressFill(const ProgressBox& box, int32_t from, int32_t to) override;
    void ProgressTime(const ProgressBox& box, const std::string& text) override;
    bool ProgressPump(const ProgressBox& box) override;
    void ProgressHide(const ProgressBox& box) override;

    void SetCursor(Cursor cursor) override;
    int32_t MessageBox(const std::string& caption, int32_t mode, const std::string& text) override;
    void SendToWindow(WindowHandle to, int32_t message, WindowHandle about) override;
    void ImageRegionChanged(ImageWindow& record, int32_t x0, int32_t y0, int32_t x1,
                            int32_t y1) override;
    uint64_t TickCount() override;

    // The open progress box, or null.
    ProgressWindow* progressWindow() const { return box_.data(); }

private:
    void DestroyBox();

    QPointer<QMdiArea> workspace_;
    QPointer<ProgressWindow> box_;
    bool waiting_ = false;  // the wait cursor is on
    QElapsedTimer clock_;
};

}  // namespace lv
