#include <vort/preferences/VTPreferences.h>
#include <vort/services/ApplicationContext.h>

#include <QtCore/QFile>
#include <QtCore/QSaveFile>

#include <array>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sstream>
#include <utility>

VTPreferences::Table VTPreferences::m_prefMaps;
bool VTPreferences::m_loaded = false;
bool VTPreferences::m_dirty = false;

namespace {

const char *const kFileName = "nexlark.prf";
const char *const kHeader = "#\n#Nexlark Preference File\n#\n\n\n";
const char *const kGeneral = "General";
const char *const kRelease = "TessarRelease";
const char *const kSyntaxHighlighting = "SyntaxHighlighting";
const char *const kTreeBrowser = "Nexlark Tree Browser";
const char *const kTreeClassRecord = "TBTreeClassRecord_";
const char *const kFirstOldPrefix = "1";
const char *const kSecondOldPrefix = "1997";
const char *const kLastOldRelease = "1998c";
const char *const kReadError = "Error reading Nexlark Preferences";
const char *const kWriteError = "Error writing Nexlark Preferences";

// The file's reader: a character-driven state machine whose state survives from one buffer to
// the next. Runs of characters that only accumulate are taken a whole run at a time.
class Reader {
public:
    // White space is what `isspace` says in the locale of the moment, asked once per load.
    explicit Reader(VTPreferences::Table &table) : m_table(table) {
        for (int c = 0; c < 256; ++c) {
            m_space[static_cast<std::size_t>(c)] = std::isspace(c) != 0;
        }
    }

    void feed(const char *data, std::size_t size) {
        const char *const end = data + size;
        const char *p = data;
        while (p < end) {
            switch (m_state) {
                case LineStart:
                    if (*p == '#') {
                        m_state = Comment;
                        ++p;
                    } else if (*p == '[') {
                        m_section.clear();
                        m_current = nullptr;
                        m_state = SectionName;
                        ++p;
                    } else if (isSpace(*p)) {
                        ++p;
                    } else {
                        m_key.clear();
                        m_value.clear();
                        m_state = Key;
                    }
                    break;
                case Comment:
                    p = skipTo(p, end, '\n');
                    if (p < end) {
                        m_state = LineStart;
                        ++p;
                    }
                    break;
                case SectionName:
                    p = appendTo(m_section, p, end, ']');
                    if (p < end) {
                        m_state = LineStart;
                        ++p;
                    }
                    break;
                case Key:
                    p = appendTo(m_key, p, end, '=');
                    if (p < end) {
                        m_state = BeforeValue;
                        ++p;
                    }
                    break;
                case BeforeValue:
                    if (isSpace(*p)) {
                        ++p;
                    } else {
                        m_state = Value;
                    }
                    break;
                case Value:
                    p = appendTo(m_value, p, end, '\n');
                    if (p < end) {
                        // A line break with anything missing is dropped, and the value goes on.
                        if (!m_section.empty() && !m_key.empty() && !m_value.empty()) {
                            store();
                            m_state = LineStart;
                        }
                        ++p;
                    }
                    break;
            }
        }
    }

private:
    enum State { LineStart, Comment, SectionName, Key, BeforeValue, Value };

    static const char *skipTo(const char *p, const char *end, char stop) {
        const void *found = std::memchr(p, stop, static_cast<std::size_t>(end - p));
        return found != nullptr ? static_cast<const char *>(found) : end;
    }

    static const char *appendTo(std::string &text, const char *p, const char *end, char stop) {
        const char *const found = skipTo(p, end, stop);
        text.append(p, found);
        return found;
    }

    bool isSpace(char c) const { return m_space[static_cast<unsigned char>(c)]; }

    // Key and value are cleared before the next line's use, so they move into the table. Files
    // are written in key order, so a key usually goes behind the last one without a search.
    void store() {
        if (m_current == nullptr) {
            m_current = &m_table[m_section];
        }
        VTPreferences::Section &keys = *m_current;
        if (keys.empty() || keys.rbegin()->first < m_key) {
            keys.emplace_hint(keys.end(), std::move(m_key), std::move(m_value));
        } else {
            keys[m_key] = std::move(m_value);
        }
    }

    VTPreferences::Table &m_table;
    State m_state = LineStart;
    std::string m_section;
    std::string m_key;
    std::string m_value;
    // The table's section of `m_section`, once something was stored in it.
    VTPreferences::Section *m_current = nullptr;
    std::array<bool, 256> m_space;
};

void writeText(std::string &out, VTPreferences::Table const &table) {
    out = kHeader;
    for (auto const &section : table) {
        if (section.second.empty()) {
            continue;
        }
        out += '[';
        out += section.first;
        out += "]\n";
        for (auto const &entry : section.second) {
            out += entry.first;
            out += '=';
            out += entry.second;
            out += '\n';
        }
        out += '\n';
    }
}

std::string format(const char *pattern, int value) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, pattern, value);
    return buffer;
}

// Old releases stored colour components as fractions of 1. A component too large for an int is
// held at the int's limits.
int fractionToByte(double fraction) {
    const double scaled = fraction * 255.0 + 0.5;
    if (scaled <= static_cast<double>(INT_MIN)) {
        return INT_MIN;
    }
    if (scaled >= static_cast<double>(INT_MAX)) {
        return INT_MAX;
    }
    return static_cast<int>(scaled);
}

}  // namespace

std::string VTPreferences::getPrefFileName() {
    VTServices::ApplicationContext *const context =
        VTServices::VTService<VTServices::ApplicationContext>::get();
    const char *const directory =
        context != nullptr ? context->getPreferencesDirectory(true) : nullptr;
    if (directory == nullptr) {
        return std::string();
    }
    std::string name = directory;
    if (name.empty() || (name.back() != '/' && name.back() != '\\')) {
        name += '/';
    }
    return name + kFileName;
}

bool VTPreferences::loadPrefs() {
    if (m_loaded) {
        return true;
    }
    const std::string name = getPrefFileName();
    if (name.empty()) {
        return false;
    }
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(name.c_str(), "r"),
                                                          &std::fclose);
    if (!file) {
        return false;
    }
    m_prefMaps.clear();
    Reader reader(m_prefMaps);
    char buffer[255];
    for (;;) {
        const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get());
        reader.feed(buffer, count);
        if (count < sizeof buffer) {
            if (std::ferror(file.get())) {
                std::perror(kReadError);
            }
            break;
        }
    }
    file.reset();
    m_loaded = true;
    m_dirty = false;
    grandfatherProps();
    return true;
}

bool VTPreferences::savePrefs() {
    if (!m_dirty) {
        return false;
    }
    const std::string name = getPrefFileName();
    if (name.empty()) {
        return false;
    }
    QSaveFile file(QFile::decodeName(QByteArray::fromStdString(name)));
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    std::string text;
    writeText(text, m_prefMaps);
    const qint64 written = file.write(text.data(), static_cast<qint64>(text.size()));
    // The rename happens only when every byte reached the temporary file; otherwise the old file
    // stays as it was.
    if (written != static_cast<qint64>(text.size()) || !file.commit()) {
        std::fprintf(stderr, "%s: %s\n", kWriteError, file.errorString().toLocal8Bit().constData());
        return false;
    }
    m_dirty = false;
    return true;
}

bool VTPreferences::clearPrefs() {
    const std::string name = getPrefFileName();
    if (name.empty()) {
        return false;
    }
    std::FILE *const file = std::fopen(name.c_str(), "w");
    if (file == nullptr) {
        return false;
    }
    std::fclose(file);
    m_prefMaps.clear();
    m_loaded = false;
    m_dirty = false;
    return true;
}

std::string VTPreferences::getPref(const std::string &section, const std::string &key) {
    loadPrefs();
    const auto foundSection = m_prefMaps.find(section);
    if (foundSection == m_prefMaps.end()) {
        return std::string();
    }
    const auto foundKey = foundSection->second.find(key);
    return foundKey != foundSection->second.end() ? foundKey->second : std::string();
}

bool VTPreferences::setPref(const std::string &section, const std::string &key,
                            const std::string &value) {
    if (value.empty()) {
        return delPref(section, key);
    }
    std::string &stored = m_prefMaps[section][key];
    if (stored != value) {
        stored = value;
        m_dirty = true;
    }
    return true;
}

bool VTPreferences::delPref(const std::string &section, const std::string &key) {
    const auto foundSection = m_prefMaps.find(section);
    if (foundSection == m_prefMaps.end()) {
        return false;
    }
    if (foundSection->second.erase(key) == 0) {
        return false;
    }
    m_dirty = true;
    return true;
}

bool VTPreferences::versionHasChanged() {
    const std::string stored = getPref(kGeneral, kRelease);
    if (stored.empty()) {
        return true;
    }
    VTServices::ApplicationContext *const context =
        VTServices::VTService<VTServices::ApplicationContext>::get();
    const char *const release = context != nullptr ? context->getRelease() : nullptr;
    return stored != (release != nullptr ? release : "");
}

void VTPreferences::grandfatherProps() {
    if (!versionHasChanged()) {
        return;
    }
    const auto tree = m_prefMaps.find(kTreeBrowser);
    if (tree != m_prefMaps.end()) {
        Section &keys = tree->second;
        for (auto entry = keys.lower_bound(kTreeClassRecord);
             entry != keys.end() &&
             entry->first.compare(0, std::strlen(kTreeClassRecord), kTreeClassRecord) == 0;) {
            entry = keys.erase(entry);
            m_dirty = true;
        }
    }

    const std::string old = getPref(kGeneral, kRelease);
    const bool needsConversion = old.compare(0, 1, kFirstOldPrefix) == 0 ||
                                 old.compare(0, 4, kSecondOldPrefix) == 0 || old == kLastOldRelease;
    const auto colours = m_prefMaps.find(kSyntaxHighlighting);
    if (needsConversion && colours != m_prefMaps.end()) {
        for (auto &entry : colours->second) {
            // A component that doesn't read counts as 0.
            std::istringstream in(entry.second);
            double red = 0.0;
            double green = 0.0;
            double blue = 0.0;
            in >> red >> green >> blue;
            std::string converted = std::to_string(fractionToByte(red)) + ' ' +
                                    std::to_string(fractionToByte(green)) + ' ' +
                                    std::to_string(fractionToByte(blue));
            if (converted != entry.second) {
                entry.second.swap(converted);
                m_dirty = true;
            }
        }
    }

    VTServices::ApplicationContext *const context =
        VTServices::VTService<VTServices::ApplicationContext>::get();
    const char *const release = context != nullptr ? context->getRelease() : nullptr;
    setPref(kGeneral, kRelease, release != nullptr ? release : "");
    savePrefs();
}

bool VTPreferences::getBoolPref(std::string section, std::string key, bool defaultValue) {
    if (section.empty()) {
        return defaultValue;
    }
    const std::string value = getPref(section, key);
    if (value == "1") {
        return true;
    }
    if (value == "0") {
        return false;
    }
    return defaultValue;
}

bool VTPreferences::setBoolPref(std::string section, std::string key, bool value) {
    if (section.empty()) {
        return false;
    }
    return setPref(section, key, value ? "1" : "0");
}

int VTPreferences::getIntPref(std::string section, std::string key, int defaultValue) {
    if (section.empty()) {
        return defaultValue;
    }
    const std::string value = getPref(section, key);
    int result = defaultValue;
    if (!value.empty()) {
        std::sscanf(value.c_str(), "%d", &result);
    }
    return result;
}

bool VTPreferences::setIntPref(std::string section, std::string key, int value) {
    if (section.empty()) {
        return false;
    }
    return setPref(section, key, format("%d", value));
}

void VTPreferences::getRectPref(std::string section, std::string key, int &x, int &y, int &width,
                                int &height, int defaultX, int defaultY, int defaultWidth,
                                int defaultHeight) {
    x = defaultX;
    y = defaultY;
    width = defaultWidth;
    height = defaultHeight;
    if (section.empty()) {
        return;
    }
    const std::string value = getPref(section, key);
    if (!value.empty()) {
        std::sscanf(value.c_str(), "%d %d %d %d", &x, &y, &width, &height);
    }
}

bool VTPreferences::setRectPref(std::string section, std::string key, int x, int y, int width,
                                int height) {
    if (section.empty()) {
        return false;
    }
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%d %d %d %d", x, y, width, height);
    return setPref(section, key, buffer);
}

VORT::Color VTPreferences::getColorPref(const std::string &section, const std::string &key,
                                        const VORT::Color &defaultValue) {
    if (section.empty()) {
        return defaultValue;
    }
    std::istringstream in(getPref(section, key));
    int red = 0;
    int green = 0;
    int blue = 0;
    if (!(in >> red >> green >> blue)) {
        return defaultValue;
    }
    return VORT::Color(red / 255.0, green / 255.0, blue / 255.0, 1.0);
}

bool VTPreferences::setColorPref(const std::string &section, const std::string &key,
                                 const VORT::Color &value) {
    if (section.empty()) {
        return false;
    }
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%d %d %d", value.red(), value.green(), value.blue());
    return setPref(section, key, buffer);
}

void VTPreferences::getStringPref(std::string section, std::string key, std::string *value,
                                  const char *defaultValue) {
    if (value == nullptr) {
        return;
    }
    if (!section.empty()) {
        *value = getPref(section, key);
    }
    if (value->empty()) {
        *value = defaultValue != nullptr ? defaultValue : "";
    }
}

bool VTPreferences::setStringPref(std::string section, std::string key, std::string value) {
    if (section.empty()) {
        return false;
    }
    return setPref(section, key, value);
}

int *VTPreferences::getIntArrayPref(std::string section, std::string key, int &count) {
    count = 0;
    if (section.empty()) {
        return nullptr;
    }
    const std::string value = getPref(section, key);
    std::vector<std::string> tokens;
    std::string::size_type position = 0;
    for (;;) {
        position = value.find_first_not_of(" ,", position);
        if (position == std::string::npos) {
            break;
        }
        const std::string::size_type end = value.find_first_of(" ,", position);
        tokens.push_back(value.substr(position, end - position));
        position = end;
    }
    if (tokens.empty()) {
        return nullptr;
    }
    count = static_cast<int>(tokens.size());
    int *const values = new int[tokens.size()]();
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        std::sscanf(tokens[i].c_str(), "%d", &values[i]);
    }
    return values;
}

bool VTPreferences::setIntArrayPref(std::string section, std::string key, const int *values,
                                    int count) {
    if (section.empty()) {
        return false;
    }
    std::string text;
    for (int i = 0; i < count && values != nullptr; ++i) {
        text += format("%d ", values[i]);
    }
    return setPref(section, key, text);
}

void VTPreferences::getStringVectorPref(std::string section, std::string key,
                                        std::vector<std::string> *values) {
    if (section.empty() || values == nullptr) {
        return;
    }
    const std::string value = getPref(section, key);
    if (value.empty()) {
        return;
    }
    values->clear();
    // The last character is the writer's closing comma, whatever it really is.
    const std::string::size_type end = value.size() - 1;
    std::string::size_type start = 0;
    while (start < end) {
        std::string::size_type comma = value.find(',', start);
        if (comma == std::string::npos || comma > end) {
            comma = end;
        }
        if (comma > start) {
            values->push_back(value.substr(start, comma - start));
        }
        start = comma + 1;
    }
}

bool VTPreferences::setStringVectorPref(std::string section, std::string key,
                                        std::vector<std::string> *values) {
    if (section.empty()) {
        return false;
    }
    std::string text;
    if (values != nullptr) {
        for (std::string const &element : *values) {
            text += element;
            text += ',';
        }
    }
    return setPref(section, key, text);
}
