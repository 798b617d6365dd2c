// lumivue: the editor.
#include <QApplication>

#include "shell/tables.h"
#include "shell/ui/main_window.h"

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName("Meridane");
    QApplication::setApplicationName("Lumivue");
    lv::InitEngineTables();
    lv::MainWindow frame;
    frame.showMaximized();
    return QApplication::exec();
}
