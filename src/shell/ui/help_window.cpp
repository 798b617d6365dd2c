#include "shell/ui/help_window.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QPushButton>
#include <QRegularExpression>
#include <QTextDocument>
#include <QUrl>
#include <QVBoxLayout>
#include <utility>
#include <vector>

#include "transform/registry.h"

namespace lv {

namespace {

HelpWindow* gHelp = nullptr;

// A module's page, its screenshot beside the help folder when there is one.
QString ModulePage(const QString& directory, const QString& name)
{
    const TransformModule* module = FindTransform(name.toStdString());
    if (!module) return QString();
    const QString shot = QDir(directory).absoluteFilePath(
        QStringLiteral("../screenshot-%1.png").arg(QString::fromLatin1(module->name)));
    const std::string picture =
        QFileInfo::exists(shot)
            ? QUrl::fromLocalFile(QDir::cleanPath(shot)).toString().toStdString()
            : std::string();
    return QString::fromStdString(ModuleHelpPage(*module, picture));
}

// The list of every transformation's page.
QString ModuleList()
{
    QString page = QStringLiteral("<html><body><h1>Transformations</h1><ul>");
    for (const TransformModule& m : Transforms())
        page += QStringLiteral("<li><a href=\"module:%1\">%2</a></li>")
                    .arg(QString::fromLatin1(m.name), QString::fromLatin1(m.title).toHtmlEscaped());
    return page + QStringLiteral("</ul><p><a href=\"index.html\">Contents</a></p></body></html>");
}

// A page's title and its words, tags taken out.
std::pair<QString, QString> TitleAndText(const QString& html)
{
    QTextDocument document;
    document.setHtml(html);
    QString title = document.metaInformation(QTextDocument::DocumentTitle);
    return {title, document.toPlainText()};
}

}  // namespace

bool WriteManual(const QString& directory, const QString& path)
{
    const QDir folder(directory);
    if (!folder.exists(QStringLiteral("index.html"))) return false;
    // The pages in reading order, each from the top of a sheet.
    QStringList pages;
    auto file = [&](const QString& name) {
        QFile in(folder.filePath(name));
        if (in.open(QIODevice::ReadOnly)) pages << QString::fromUtf8(in.readAll());
    };
    file(QStringLiteral("index.html"));
    for (const QString& name :
         folder.entryList({QStringLiteral("*.html")}, QDir::Files, QDir::Name))
        if (name != QLatin1String("index.html")) file(name);
    for (const TransformModule& m : Transforms())
        pages << ModulePage(directory, QString::fromLatin1(m.name));
    QString html;
    for (const QString& page : pages) {
        QTextDocument one;
        one.setHtml(page);
        html += QStringLiteral("<div style=\"page-break-before: always\">") +
                one.toHtml().section(QStringLiteral("<body"), 1).section(QLatin1Char('>'), 1) +
                QStringLiteral("</div>");
    }
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly)) return false;
    QPdfWriter pdf(&out);
    pdf.setTitle(QStringLiteral("Lumivue Manual"));
    pdf.setPageSize(QPageSize(QPageSize::A4));
    pdf.setResolution(120);
    QTextDocument manual;
    manual.setHtml(html);
    manual.print(&pdf);
    return QFileInfo(path).size() > 0;
}

HelpBrowser::HelpBrowser(QWidget* parent, const QString& directory)
    : QTextBrowser(parent), directory_(directory)
{
    setSearchPaths({directory});
    setOpenLinks(true);
}

QVariant HelpBrowser::loadResource(int type, const QUrl& name)
{
    if (type == QTextDocument::HtmlResource && name.scheme() == QLatin1String("module")) {
        const QString module = name.path();
        return module.isEmpty() ? ModuleList() : ModulePage(directory_, module);
    }
    return QTextBrowser::loadResource(type, name);
}

HelpWindow::HelpWindow(QWidget* owner, const QString& directory)
    : QWidget(owner, Qt::Window), directory_(directory)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Lumivue Help"));
    auto* layout = new QVBoxLayout(this);
    auto* bar = new QHBoxLayout;
    auto* contents = new QPushButton(QStringLiteral("Contents"), this);
    auto* back = new QPushButton(QStringLiteral("Back"), this);
    search_ = new QLineEdit(this);
    search_->setPlaceholderText(QStringLiteral("Search the help"));
    bar->addWidget(contents);
    bar->addWidget(back);
    bar->addWidget(new QLabel(QStringLiteral("Search:"), this));
    bar->addWidget(search_, 1);
    layout->addLayout(bar);
    browser_ = new HelpBrowser(this, directory);
    layout->addWidget(browser_, 1);
    connect(contents, &QPushButton::clicked, this,
            [this] { browser_->setSource(QUrl(QStringLiteral("index.html"))); });
    connect(back, &QPushButton::clicked, browser_, &QTextBrowser::backward);
    connect(search_, &QLineEdit::returnPressed, this, [this] { Search(search_->text()); });
    resize(760, 640);
}

HelpWindow::~HelpWindow()
{
    if (gHelp == this) gHelp = nullptr;
}

HelpWindow* HelpWindow::Current() { return gHelp; }

HelpWindow* HelpWindow::Show(QWidget* owner, const QString& directory, const QString& page)
{
    if (directory.isEmpty()) return nullptr;
    if (!gHelp) gHelp = new HelpWindow(owner, directory);
    gHelp->browser_->setSource(QUrl(page));
    gHelp->show();
    gHelp->raise();
    gHelp->activateWindow();
    return gHelp;
}

void HelpWindow::Search(const QString& words)
{
    const QStringList wanted =
        words.toLower().split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
    // Every page: the shipped ones and each transformation's.
    std::vector<std::pair<QString, QString>> pages;  // link and HTML
    for (const QString& file :
         QDir(directory_).entryList({QStringLiteral("*.html")}, QDir::Files, QDir::Name)) {
        QFile in(QDir(directory_).filePath(file));
        if (in.open(QIODevice::ReadOnly)) pages.emplace_back(file, QString::fromUtf8(in.readAll()));
    }
    for (const TransformModule& m : Transforms()) {
        const QString name = QString::fromLatin1(m.name);
        pages.emplace_back(QStringLiteral("module:") + name, ModulePage(directory_, name));
    }
    QString found;
    for (const auto& [link, html] : pages) {
        const auto [title, text] = TitleAndText(html);
        const QString lower = text.toLower() + QLatin1Char(' ') + title.toLower();
        bool all = !wanted.isEmpty();
        for (const QString& word : wanted) all = all && lower.contains(word);
        if (all)
            found += QStringLiteral("<li><a href=\"%1\">%2</a></li>")
                         .arg(link, (title.isEmpty() ? link : title).toHtmlEscaped());
    }
    browser_->setHtml(QStringLiteral("<html><body><h1>Search: %1</h1>").arg(words.toHtmlEscaped()) +
                      (found.isEmpty() ? QStringLiteral("<p>No page holds all of these words.</p>")
                                       : QStringLiteral("<ul>") + found + QStringLiteral("</ul>")) +
                      QStringLiteral("</body></html>"));
}

}  // namespace lv
