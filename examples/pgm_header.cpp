#include "pgm_header.hpp"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>

#include "program.hpp"

namespace examples {

namespace {

// A comment may begin anywhere and counts as the line end that closes it.
int next(std::istream& file) {
    int c = file.get();
    if (c == '#')
        while (c != EOF && c != '\n' && c != '\r') c = file.get();
    return c;
}

// A number and the one white space after it.
int number(std::istream& file, const std::string& path, const char* what) {
    int c = next(file);
    while (std::isspace(c)) c = next(file);
    if (c == EOF) throw FileError(path, std::string("ends before its ") + what);
    if (!std::isdigit(c)) throw FileError(path, std::string("its ") + what + " is not a number");
    std::int64_t value = 0;
    for (; std::isdigit(c); c = next(file)) value = std::min<std::int64_t>(value * 10 + (c - '0'), 1'000'000'000);
    if (c != EOF && !std::isspace(c)) throw FileError(path, std::string("its ") + what + " is not a number");
    return int(value);
}

}  // namespace

PgmHeader readPgmHeader(std::istream& file, const std::string& path) {
    PgmHeader header;
    header.width = number(file, path, "width");
    header.height = number(file, path, "height");
    header.maximum = number(file, path, "maximum value");
    if (header.width < 1 || header.height < 1) throw FileError(path, "is a picture without pixels");
    if (header.maximum < 1 || header.maximum > 65535)
        throw FileError(path, "its maximum value is " + std::to_string(header.maximum) + ", not 1 to 65535");
    return header;
}

void checkPgmSamples(std::istream& file, const std::string& path, const PgmHeader& header) {
    if (!std::filesystem::is_regular_file(path)) return;
    const std::int64_t needed = std::int64_t(header.width) * header.height * header.sampleBytes();
    const std::int64_t present = file ? std::int64_t(std::filesystem::file_size(path)) - file.tellg() : 0;
    if (present < needed)
        throw FileError(path, "is truncated: " + std::to_string(header.width) + " x " + std::to_string(header.height) + " samples need " +
                                  std::to_string(needed) + " bytes, it has " + std::to_string(present));
}

}  // namespace examples
