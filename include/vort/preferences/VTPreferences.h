// `VTPreferences`: the tool family's user settings, kept in the text file "nexlark.prf" in the
// directory that the host's `VTServices::ApplicationContext` names. A fully static class: a
// table of sections, keys and value texts in memory, typed accessors that turn values into text
// and back, a lazy load on the first read, an explicit save, and a one-time migration when the
// file was written by another release of the host.
//
// The file: "#\n#Nexlark Preference File\n#\n\n\n", then for each section with keys, in byte
// order, "[section]\n", a "key=value\n" line per key in byte order, and "\n". Bytes go in and out
// as they stand: no escapes, no trimming, no line-end conversion (a carriage return before a line
// end is part of the value). Reading follows the file's own state machine, whose quirks are kept:
// a key with nothing behind its "=" takes the next non-blank line as its value; a key above the
// first section header, or a line that begins with "=", swallows the rest of the file unstored;
// a last line without a line break is not stored.
//
// Value texts: bool "1"/"0"; int "%d"; rectangle "%d %d %d %d"; colour "r g b" as bytes (alpha is
// not kept); int array "%d " per element; string vector "element," per element.
//
// Rules shared by every typed operation: an empty section name makes it do nothing (a getter gives
// its default, a setter false). A setter turns its value into text; an empty text deletes the key
// and returns what `delPref` returns; otherwise it stores the text, marks the table dirty only if
// the text changed, and returns true. Setters neither load nor save. Getters load the file first
// if it hasn't been read. A section name must not hold "]". A key must not hold "=", must not be
// empty and must not begin with white space, "#" or "["; a value must not hold a line break nor
// begin with white space: the file can't carry them, and reading such a file back loses them or,
// for an empty key, everything behind it.
//
// Thread safety: none; the store belongs to the host's main thread.
//
// Failure: reported by boolean results only, plus `perror` texts on standard error for a read
// error ("Error reading Nexlark Preferences") and a failed save ("Error writing Nexlark
// Preferences"). A missing file is no error: getters give their defaults. Without an installed
// `ApplicationContext`, or with one that names no directory, the store works in memory only.
// Saving never leaves a half-written file: the new text goes to a temporary file in the same
// directory, which then replaces the old one, so a crash or a full disk leaves one of the two
// whole.
#ifndef VORT_PREFERENCES_VTPREFERENCES_H
#define VORT_PREFERENCES_VTPREFERENCES_H

#include <vort/types/Color.h>
#include <vort/vort_export.h>

#include <map>
#include <string>
#include <vector>

class VORT_EXPORT VTPreferences {
public:
    using Section = std::map<std::string, std::string>;
    using Table = std::map<std::string, Section>;

    VTPreferences() = delete;

    // Reads the file once; true at once when it has been read. False when there is no file name
    // or the file can't be opened, and then the next read tries again. Loading replaces the whole
    // table, so anything set before the first successful load is lost. Ends with the release
    // migration, which may save.
    static bool loadPrefs();
    // Writes the table when it has changed since the last load or save. False when nothing was
    // written: nothing changed, no file name, or the write failed (which keeps the table dirty).
    static bool savePrefs();
    // Empties the file and the table, and forgets that the file was read. False without a file
    // name or when the file can't be opened for writing.
    static bool clearPrefs();

    static bool getBoolPref(std::string section, std::string key, bool defaultValue);
    static bool setBoolPref(std::string section, std::string key, bool value);

    // The default also when the text has no leading number.
    static int getIntPref(std::string section, std::string key, int defaultValue);
    static bool setIntPref(std::string section, std::string key, int value);

    // Stores the four defaults, then as many numbers as the text has, from the first.
    static void getRectPref(std::string section, std::string key, int &x, int &y, int &width,
                            int &height, int defaultX, int defaultY, int defaultWidth,
                            int defaultHeight);
    static bool setRectPref(std::string section, std::string key, int x, int y, int width,
                            int height);

    // Three whole numbers read from the text, as bytes of an opaque colour; the default when
    // fewer than three read.
    static VORT::Color getColorPref(const std::string &section, const std::string &key,
                                    const VORT::Color &defaultValue);
    // Writes red, green and blue as "r g b"; alpha is not kept.
    static bool setColorPref(const std::string &section, const std::string &key,
                             const VORT::Color &value);

    // `value` gets the stored text, or `defaultValue` (null reads as "") when that is empty. With
    // an empty section name `value` keeps its text unless it was empty.
    static void getStringPref(std::string section, std::string key, std::string *value,
                              const char *defaultValue);
    static bool setStringPref(std::string section, std::string key, std::string value);

    // The numbers of the text, separated by any run of blanks and commas; a token that isn't a
    // number gives 0. Null with `count` 0 when there are none. The caller deletes the array with
    // `delete[]`.
    static int *getIntArrayPref(std::string section, std::string key, int &count);
    // A count of 0 or less deletes the key.
    static bool setIntArrayPref(std::string section, std::string key, const int *values, int count);

    // The elements of a text written as "a,b,". The text's last character is taken as the final
    // comma whatever it is, so "a,bc" gives "a" and "b". Leaves `values` alone for an empty
    // section name or a missing key; otherwise replaces its contents.
    static void getStringVectorPref(std::string section, std::string key,
                                    std::vector<std::string> *values);
    // An empty vector (or none) deletes the key.
    static bool setStringVectorPref(std::string section, std::string key,
                                    std::vector<std::string> *values);

protected:
    // Loads, then gives the text, or "" when section or key is missing.
    static std::string getPref(const std::string &section, const std::string &key);
    // The setter rule, on a text.
    static bool setPref(const std::string &section, const std::string &key,
                        const std::string &value);
    // Removes the key and marks the table dirty; false when section or key is missing. A section
    // left empty stays in the table and is skipped by saving.
    static bool delPref(const std::string &section, const std::string &key);
    // Whether "TessarRelease" in "General" differs from the host's release; a missing key counts
    // as a change.
    static bool versionHasChanged();
    // The migration run at the end of each load (see the source for its steps).
    static void grandfatherProps();
    // The directory from the service with "/" and "nexlark.prf" behind it; "" without one.
    static std::string getPrefFileName();

    static Table m_prefMaps;
    static bool m_loaded;
    static bool m_dirty;
};

#endif  // VORT_PREFERENCES_VTPREFERENCES_H
