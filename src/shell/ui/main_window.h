// The editor's frame: a maximised main window whose workspace is an MDI area
// holding the image windows and panels.
#pragma once

#include <QMainWindow>

class QMdiArea;

namespace lv {

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);

    QMdiArea* workspace() const { return workspace_; }

private:
    QMdiArea* workspace_;
};

}  // namespace lv
