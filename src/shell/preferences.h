// The settings that survive between runs: the user's preferences, edited in
// the Preferences panel, and the session state, read at start-up and written
// at exit without asking. Both are kept as strings in a key-value store, in
// the groups "Preferences" and "State", and parsed with the text layer.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace lv {

inline constexpr std::string_view kPreferencesGroup = "Preferences";
inline constexpr std::string_view kStateGroup = "State";

// Where the settings are kept. Values are strings.
class KeyValueStore {
public:
    virtual ~KeyValueStore() = default;
    // The value of `key` in `group`; false when there is none.
    virtual bool Get(std::string_view group, std::string_view key, std::string& value) const = 0;
    // Sets the value, creating the group when needed. Returns 0 or a code.
    virtual int32_t Set(std::string_view group, std::string_view key, std::string_view value) = 0;
    virtual bool HasGroup(std::string_view group) const = 0;
};

// A store held in memory, for tests and for a run with nowhere to save.
class MemoryStore : public KeyValueStore {
public:
    bool Get(std::string_view group, std::string_view key, std::string& value) const override;
    int32_t Set(std::string_view group, std::string_view key, std::string_view value) override;
    bool HasGroup(std::string_view group) const override;

    std::map<std::string, std::map<std::string, std::string, std::less<>>, std::less<>> groups;
};

// A value longer than this is ignored when read, as if it were missing.
inline constexpr size_t kMaxStoredValue = 339;

struct Preferences {
    bool confirmClose = true;                              // "confirm"
    std::array<uint8_t, 3> workspaceColor = {64, 64, 64};  // "workspace", red, green, blue
    int32_t borderWidth = 8;                               // "border", then its color
    std::array<uint8_t, 3> borderColor = {255, 255, 255};
    std::string pcdDirectory;          // "pcddirectory"
    std::string startupDirectory;      // "startupdirectory"
    std::string tempDirectory;         // "tempdirectory"
    double defaultResolution = 200.0;  // "defaultres", dpi
    int32_t undoLevels = 1;            // "undo": 0 none, 1 single, 2 multiple
    int32_t recentCount = 4;           // "nfilemenu", 0..10
    int32_t defaultOpenFilter = 1;     // "defaultfileopentype"
    int32_t defaultSaveFilter = 1;     // "defaultfilesavetype"
    bool orientOnOpen = true;          // "orient": turn pictures by their EXIF orientation

    bool operator==(const Preferences&) const = default;
};

inline constexpr int32_t kRecentFileSlots = 10;

struct SessionState {
    std::array<std::string, kRecentFileSlots> recentFiles;      // "openfile0".."openfile9"
    int32_t defaultPcdRes = 3;                                  // "defaultpcdres"
    int32_t toolBarSide = 0;                                    // "ribbonorientation"
    std::array<double, 4> printMargins = {0.0, 0.0, 0.0, 0.0};  // left, top, right, bottom
    std::array<int32_t, 6> browse = {1, 1, 0, 0, 3, 0};
    std::array<int32_t, 2> jpegQuality = {97, 0};

    bool operator==(const SessionState&) const = default;
};

// The live preferences and session state of this run, read at start-up
// and edited by the Preferences panel; engine rules (border width, undo
// levels, the close question) read them here.
Preferences& CurrentPreferences();
SessionState& CurrentState();

// Resets `preferences` to the defaults, then takes every readable value of
// the "Preferences" group. A missing group, a missing value or an unreadable
// number leaves the default.
void PreferencesLoad(const KeyValueStore& store, Preferences& preferences);
// Writes every preference. Returns 0 or the store's first failure.
int32_t PreferencesSave(KeyValueStore& store, const Preferences& preferences);

// Resets `state` to the defaults, then reads the "State" group when its
// version is "1.0". Only the first `recentCount` (0..10) recent files are
// read, and only names that are not empty.
void StateLoad(const KeyValueStore& store, int32_t recentCount, SessionState& state);
// Writes the version and every field, all ten recent files included.
int32_t StateSave(KeyValueStore& store, const SessionState& state);

}  // namespace lv
