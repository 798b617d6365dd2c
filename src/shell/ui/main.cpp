// lumivue: the editor.
#include <QApplication>
#include <QScreen>

#include "shell/tables.h"
#include "shell/ui/app.h"
#include "shell/ui/help_window.h"

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName("Meridane");
    QApplication::setApplicationName("Lumivue");
    // The build's step that makes the electronic manual from the help pages.
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() == 4 && arguments[1] == QLatin1String("--write-manual")) {
        lv::InitEngineTables();
        return lv::WriteManual(arguments[2], arguments[3]) ? 0 : 1;
    }
    lv::Application editor;
    if (!editor.Start(QApplication::arguments())) return 0;
    const int result = QApplication::exec();
    editor.Shutdown();
    return result;
}
