#include "shell/ui/settings_store.h"

#include <QStringList>

#include "shell/errors.h"

namespace lv {

namespace {

QString FromView(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString KeyPath(std::string_view group, std::string_view key)
{
    return FromView(group) + QLatin1Char('/') + FromView(key);
}

}  // namespace

SettingsStore::SettingsStore() : settings_(QStringLiteral("Meridane"), QStringLiteral("Lumivue")) {}

SettingsStore::SettingsStore(const QString& iniPath) : settings_(iniPath, QSettings::IniFormat) {}

bool SettingsStore::Get(std::string_view group, std::string_view key, std::string& value) const
{
    const QString path = KeyPath(group, key);
    if (!settings_.contains(path)) return false;
    const QVariant stored = settings_.value(path);
    // A hand-edited INI line with commas reads back as a list; it was one
    // string to whoever wrote it.
    const QString text = stored.typeId() == QMetaType::QStringList
                             ? stored.toStringList().join(QStringLiteral(", "))
                             : stored.toString();
    value = text.toStdString();
    return true;
}

int32_t SettingsStore::Set(std::string_view group, std::string_view key, std::string_view value)
{
    settings_.setValue(KeyPath(group, key), FromView(value));
    settings_.sync();
    return settings_.status() == QSettings::NoError ? kOk : kErrWriting;
}

bool SettingsStore::HasGroup(std::string_view group) const
{
    return settings_.childGroups().contains(FromView(group));
}

}  // namespace lv
