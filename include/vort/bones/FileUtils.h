// File functions over 8-bit path strings: `readTextFileIntoNewBuffer`, `gatherFiles`,
// `gatherSubDirectories`, `buildFileAndTimeList`; and `GetCurrentProcessMemory`.
//
// Paths are bytes as the file system has them: they go to Qt through `QFile::decodeName` and
// come back through `QFile::encodeName`, so non-ASCII (UTF-8) names work. Gathered paths join
// the directory and the name with '/', unless the directory already ends with one; they are
// as absolute or relative as the directory passed. Entries come in the file system's order,
// not sorted. Hidden entries (names that start with '.') are skipped, and name patterns match
// without regard to case, as Qt's name filters do by default.
//
// Thread safety: nothing here holds state; any thread may call, and what another thread or
// process does to the same folders meanwhile is seen or not.
//
// Failure: none is reported. A directory that does not exist, or cannot be read, yields
// nothing, and so does the empty string, which names no directory; a file that cannot be
// opened gives a null buffer.
#ifndef VORT_BONES_FILEUTILS_H
#define VORT_BONES_FILEUTILS_H

#include <vort/vort_export.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace VORT {

// The file's bytes in a new buffer of `size + 1` bytes, which the caller frees with
// `delete[]`; `size` becomes the file's size. The file is read in text mode, so fewer bytes
// may arrive than `size` says: a NUL follows the bytes that arrived. Gives null, with `size`
// untouched, if the file doesn't open, and null with `size` 0 for an empty file.
VORT_EXPORT char *readTextFileIntoNewBuffer(std::string const &path, std::int64_t &size);

// Appends to `results` the files of `directory` and of its subdirectories whose names match one
// of `patterns` (wildcards '*', '?' and '[...]'; an empty list matches every file). Without
// `recursive` only the immediate subdirectories are searched besides `directory` itself.
// `results` isn't cleared.
VORT_EXPORT void gatherFiles(std::string const &directory, std::vector<std::string> const &patterns,
                             std::vector<std::string> &results, bool recursive);
// The same with one pattern; an empty pattern gathers nothing.
VORT_EXPORT void gatherFiles(std::string const &directory, std::string const &pattern,
                             std::vector<std::string> &results, bool recursive);

// Appends to `results` the subdirectories of `directory`, and theirs in turn with `recursive`,
// depth first: the last directory listed is searched first. `directory` itself isn't added,
// and `results` isn't cleared. In a recursive walk a symbolic link back to a directory of its
// own ancestry is left out, so that a loop ends the walk instead of repeating it.
VORT_EXPORT void gatherSubDirectories(std::string const &directory,
                                      std::vector<std::string> &results, bool recursive);

// Gathers the files that match `pattern` as `gatherFiles` does and appends, last gathered
// first, each path with its modification time: seconds since 1970 UTC, cut to their low 32
// bits. A file whose time can't be read (it went away meanwhile) gets 0. An empty pattern
// gathers nothing. `results` isn't cleared.
VORT_EXPORT void buildFileAndTimeList(std::string const &directory, std::string const &pattern,
                                      bool recursive,
                                      std::vector<std::pair<std::string, unsigned long>> &results);

// The process's resident memory (the "VmRSS:" line of /proc/self/status) in bytes, or in
// megabytes of 1,048,576 bytes with `inMegabytes`. 0 if the figure can't be read.
VORT_EXPORT double GetCurrentProcessMemory(bool inMegabytes);

}  // namespace VORT

#endif  // VORT_BONES_FILEUTILS_H
