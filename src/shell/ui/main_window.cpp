#include "shell/ui/main_window.h"

#include <QMdiArea>

#include "shell/version.h"

namespace lv {

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent), workspace_(new QMdiArea(this))
{
    setWindowTitle(QString::fromLatin1(kProgramTitle));
    // The workspace is dark gray (64, 64, 64) until preferences say otherwise.
    workspace_->setBackground(QColor(64, 64, 64));
    setCentralWidget(workspace_);
}

}  // namespace lv
