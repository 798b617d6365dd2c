// The program's own help window: the pages shipped in docs/help, a page for
// every transformation made from its declarations ("module:NAME"), and a
// search over all of them. No outside browser is needed.
#pragma once

#include <QString>
#include <QTextBrowser>
#include <QWidget>

class QLineEdit;

namespace lv {

// Pages of the help folder, and "module:NAME" pages made on demand.
class HelpBrowser : public QTextBrowser {
public:
    explicit HelpBrowser(QWidget* parent, const QString& directory);
    QVariant loadResource(int type, const QUrl& name) override;

private:
    QString directory_;
};

// Writes the electronic manual, one PDF of the help pages (the contents,
// each topic, then a page for every transformation), to `path`; false with
// nothing written when the help folder or the file cannot be used. The
// build runs it as `lumivue --write-manual PATH`.
bool WriteManual(const QString& directory, const QString& path);

class HelpWindow : public QWidget {
public:
    // Shows the one help window (made the first time) at `page`: a file of
    // the help folder ("index.html"), or "module:NAME". Null when the help
    // folder cannot be found.
    static HelpWindow* Show(QWidget* owner, const QString& directory, const QString& page);
    static HelpWindow* Current();
    ~HelpWindow() override;

    QTextBrowser* browser() const { return browser_; }
    QLineEdit* searchBox() const { return search_; }
    // Lists the pages that hold every word of `words`, case aside.
    void Search(const QString& words);

private:
    HelpWindow(QWidget* owner, const QString& directory);

    QString directory_;
    HelpBrowser* browser_ = nullptr;
    QLineEdit* search_ = nullptr;
};

}  // namespace lv
