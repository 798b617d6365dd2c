// lumivue: the editor.
#include <QApplication>
#include <QScreen>

#include "shell/ui/app.h"

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName("Meridane");
    QApplication::setApplicationName("Lumivue");
    lv::Application editor;
    if (!editor.Start(QApplication::arguments())) return 0;
    const int result = QApplication::exec();
    editor.Shutdown();
    return result;
}
