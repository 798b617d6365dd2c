// The editor's frame on the offscreen platform.
#include <QMdiArea>
#include <QtTest>

#include "shell/tables.h"
#include "shell/ui/main_window.h"

class FrameTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { lv::InitEngineTables(); }

    void opensAsAnEmptyWorkspaceTitledWithTheProgram()
    {
        lv::MainWindow frame;
        frame.showMaximized();
        QVERIFY(QTest::qWaitForWindowExposed(&frame));
        QCOMPARE(frame.windowTitle(), QStringLiteral("Lumivue 2.0"));
        QCOMPARE(frame.centralWidget(), frame.workspace());
        QVERIFY(frame.workspace()->subWindowList().isEmpty());
        QCOMPARE(frame.workspace()->background().color(), QColor(64, 64, 64));
    }
};

QTEST_MAIN(FrameTest)
#include "frame_test.moc"
