// Byte input and output shared by the vort tool's subcommands: whole files or the standard
// streams, and the hexadecimal spelling of bytes.
#ifndef VORT_TOOLS_VORT_TOOLIO_H
#define VORT_TOOLS_VORT_TOOLIO_H

#include <vort/bones/ByteArray.h>

#include <string>

namespace vort_tool {

// Reads all of `path`, or of standard input for "-". On failure `problem` says why.
bool readInput(std::string const &path, VORT::ByteArray &bytes, std::string &problem);
// Writes `bytes` to `path` (replacing the file), or to standard output for "-".
bool writeOutput(std::string const &path, VORT::ByteArray const &bytes, std::string &problem);

// Two digits per byte, in either case; blanks and colons between the digits are ignored and an
// optional "0x" may lead. Fails on any other character and on an odd number of digits.
bool decodeHex(std::string const &text, VORT::ByteArray &bytes, std::string &problem);
// Two lower-case digits per byte, nothing between them.
std::string encodeHex(VORT::ByteArray const &bytes);

}  // namespace vort_tool

#endif  // VORT_TOOLS_VORT_TOOLIO_H
