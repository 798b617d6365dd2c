// Preferences and session state kept with QSettings: the user's settings of
// organisation "Meridane", application "Lumivue", in the groups
// "Preferences" and "State". Every value is a string.
#pragma once

#include <QSettings>
#include <QString>

#include "shell/preferences.h"

namespace lv {

class SettingsStore : public KeyValueStore {
public:
    // The user's own settings.
    SettingsStore();
    // An INI file of its own, for tests and portable set-ups.
    explicit SettingsStore(const QString& iniPath);

    bool Get(std::string_view group, std::string_view key, std::string& value) const override;
    // Writes the value through to the file at once. 6 when it cannot be
    // written.
    int32_t Set(std::string_view group, std::string_view key, std::string_view value) override;
    bool HasGroup(std::string_view group) const override;

private:
    mutable QSettings settings_;
};

}  // namespace lv
