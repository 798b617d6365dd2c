#include "image/ui/window_dialogs.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "image/ui/image_window.h"
#include "image/window_info.h"
#include "shell/text.h"
#include "shell/ui/metrics.h"

namespace lv {

void ShowWindowInfo(QWidget* parent, const ImageWindow* record)
{
    const WindowInfoText info = WindowInfoFor(record);
    QDialog dialog(parent);
    dialog.setWindowTitle(QStringLiteral("Window Info"));
    dialog.setFont(Metrics().fontSystem);
    auto* form = new QFormLayout;
    auto add = [&](const char* label, const std::string& value) {
        auto* field = new QLabel(QString::fromStdString(value));
        field->setTextInteractionFlags(Qt::TextSelectableByMouse);
        form->addRow(QString::fromLatin1(label), field);
    };
    add("Type:", info.type);
    add("Size in memory:", info.memory);
    add("Pixels:", info.pixels);
    add("Print size:", info.printSize);
    add("Resolution:", info.resolution);
    add("File name:", info.fileName.empty() ? std::string() : info.fileName);
    add("File format:", info.fileFormat);
    add("File date:", info.fileDate);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addLayout(form);
    layout->addWidget(buttons);
    dialog.exec();
}

void ShowWindowGrid(QWidget* parent, ImageSubWindow* window)
{
    ImageWindow& record = window->record();
    const int32_t before = record.gridDivisions;
    QDialog dialog(parent);
    dialog.setWindowTitle(QStringLiteral("Window Grid"));
    dialog.setFont(Metrics().fontSystem);
    auto* divisions = new QSpinBox;
    divisions->setRange(1, 99);
    divisions->setValue(before);
    // A good value takes effect at once; the spin box refuses the others.
    QObject::connect(divisions, &QSpinBox::valueChanged, &dialog, [&](int value) {
        record.gridDivisions = value;
        window->view()->viewport()->update();
    });
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Divisions:"), divisions);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addLayout(form);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted) {
        record.gridDivisions = before;
        window->view()->viewport()->update();
    }
}

int32_t AskZoomFactor(QWidget* parent, int32_t zoom)
{
    QDialog dialog(parent);
    dialog.setWindowTitle(QStringLiteral("Zoom Factor"));
    dialog.setFont(Metrics().fontSystem);
    auto* value = new QLineEdit(QString::number(zoom < 0 ? -zoom : zoom));
    auto* enlarge = new QRadioButton(QStringLiteral("n:1"));
    auto* reduce = new QRadioButton(QStringLiteral("1:n"));
    (zoom < 0 ? reduce : enlarge)->setChecked(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(QStringLiteral("n:")));
    row->addWidget(value);
    row->addWidget(enlarge);
    row->addWidget(reduce);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addLayout(row);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted) return 0;
    int32_t n = 0;
    if (ParseInt(value->text().trimmed().toStdString(), n) != 0 || n < 1) return 0;
    return reduce->isChecked() && n != 1 ? -n : n;
}

}  // namespace lv
