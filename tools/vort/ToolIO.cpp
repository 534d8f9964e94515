#include "ToolIO.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace vort_tool {

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

int closeFile(std::FILE *file) {
    return std::fclose(file);
}

// The standard streams stay open for whoever writes next.
int keepOpen(std::FILE *) {
    return 0;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

std::string describeErrno(std::string const &what, std::string const &path) {
    return "cannot " + what + " '" + path + "': " + std::strerror(errno);
}

}  // namespace

bool readInput(std::string const &path, VORT::ByteArray &bytes, std::string &problem) {
    const bool standard = path == "-";
    File file(standard ? stdin : std::fopen(path.c_str(), "rb"), standard ? &keepOpen : &closeFile);
    if (!file) {
        problem = describeErrno("open", path);
        return false;
    }
    bytes.clear();
    char buffer[65536];
    for (;;) {
        const size_t count = std::fread(buffer, 1, sizeof buffer, file.get());
        if (count > 0) {
            bytes.append(buffer, static_cast<unsigned int>(count));
        }
        if (count < sizeof buffer) {
            break;
        }
    }
    if (std::ferror(file.get())) {
        problem = describeErrno("read", standard ? "standard input" : path);
        return false;
    }
    return true;
}

bool writeOutput(std::string const &path, VORT::ByteArray const &bytes, std::string &problem) {
    const bool standard = path == "-";
    File file(standard ? stdout : std::fopen(path.c_str(), "wb"),
              standard ? &keepOpen : &closeFile);
    if (!file) {
        problem = describeErrno("create", path);
        return false;
    }
    const size_t size = bytes.size();
    const bool written = (size == 0 || std::fwrite(bytes.data(), 1, size, file.get()) == size) &&
                         std::fflush(file.get()) == 0;
    if (!written) {
        problem = describeErrno("write", standard ? "standard output" : path);
        return false;
    }
    if (!standard && std::fclose(file.release()) != 0) {
        problem = describeErrno("write", path);
        return false;
    }
    return true;
}

bool decodeHex(std::string const &text, VORT::ByteArray &bytes, std::string &problem) {
    std::string::size_type position = 0;
    while (position < text.size() && (text[position] == ' ' || text[position] == '\t')) {
        ++position;
    }
    if (text.compare(position, 2, "0x") == 0 || text.compare(position, 2, "0X") == 0) {
        position += 2;
    }
    bytes.clear();
    int high = -1;
    for (; position < text.size(); ++position) {
        const char c = text[position];
        if (c == ' ' || c == '\t' || c == '\n' || c == ':') {
            continue;
        }
        const int value = hexValue(c);
        if (value < 0) {
            problem = "'" + text + "' is not hexadecimal";
            return false;
        }
        if (high < 0) {
            high = value;
        } else {
            const unsigned char byte = static_cast<unsigned char>(high << 4 | value);
            bytes.append(reinterpret_cast<const char *>(&byte), 1u);
            high = -1;
        }
    }
    if (high >= 0) {
        problem = "'" + text + "' has an odd number of hexadecimal digits";
        return false;
    }
    return true;
}

std::string encodeHex(VORT::ByteArray const &bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string text(bytes.size() * 2u, '0');
    for (unsigned int i = 0; i < bytes.size(); ++i) {
        text[2 * i] = digits[bytes[i] >> 4];
        text[2 * i + 1] = digits[bytes[i] & 0xF];
    }
    return text;
}

}  // namespace vort_tool
