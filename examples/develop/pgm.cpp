#include "pgm.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>

#include "errors.hpp"
#include "files.hpp"
#include "progress.hpp"

namespace develop {

namespace {

// Reads the text at a PGM file's beginning. A comment may begin anywhere in it and counts as the line end that closes it.
class HeaderReader {
  public:
    HeaderReader(std::ifstream& file, const std::string& path) : file_(file), path_(path) {}

    // A number and the one white space after it.
    int number(const char* what) {
        int c = next();
        while (std::isspace(c)) c = next();
        if (c == EOF) throw FileError(path_, std::string("ends before its ") + what);
        if (!std::isdigit(c)) throw FileError(path_, std::string("its ") + what + " is not a number");
        std::int64_t value = 0;
        for (; std::isdigit(c); c = next()) value = std::min<std::int64_t>(value * 10 + (c - '0'), 1'000'000'000);
        if (c != EOF && !std::isspace(c)) throw FileError(path_, std::string("its ") + what + " is not a number");
        return int(value);
    }

  private:
    int next() {
        int c = file_.get();
        if (c == '#')
            while (c != EOF && c != '\n' && c != '\r') c = file_.get();
        return c;
    }

    std::ifstream& file_;
    const std::string& path_;
};

// Samples above 255 take two bytes, the upper one first.
int bytesOf(int maximum) { return maximum > 255 ? 2 : 1; }

}  // namespace

Mosaic readPgm(const std::string& path) {
    std::ifstream file = openInput(path);
    file.ignore(2);  // the magic number
    HeaderReader header(file, path);
    const int width = header.number("width");
    const int height = header.number("height");
    const int maximum = header.number("maximum value");
    if (width < 1 || height < 1) throw FileError(path, "is an image without pixels");
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    if (width > largestSide || height > largestSide)
        throw FileError(path, "claims " + size + " samples; " + std::to_string(largestSide) + " a side are the limit");
    if (maximum < 1 || maximum > 65535)
        throw FileError(path, "its maximum value is " + std::to_string(maximum) + ", not 1 to 65535");

    // Memory is taken only for what the file really holds.
    const int sampleBytes = bytesOf(maximum);
    const std::int64_t needed = std::int64_t(width) * height * sampleBytes;
    const std::int64_t present = file ? std::int64_t(std::filesystem::file_size(path)) - file.tellg() : 0;
    if (present < needed)
        throw FileError(path, "is truncated: " + size + " samples need " + std::to_string(needed) + " bytes, it has " +
                                  std::to_string(present));

    Mosaic mosaic(width, height);
    mosaic.white = maximum;
    Progress progress("read", height);
    std::vector<unsigned char> line(std::size_t(width) * sampleBytes);
    for (int y = 0; y < height; ++y) {
        file.read(reinterpret_cast<char*>(line.data()), std::streamsize(line.size()));
        if (!file) throw FileError(path, "cannot be read");
        Kuv16u* const row = mosaic.row(y);
        for (int x = 0; x < width; ++x) {
            const int sample = sampleBytes == 1 ? line[x] : line[2 * x] << 8 | line[2 * x + 1];
            row[x] = Kuv16u(std::min(sample, maximum));
        }
        progress.advance(1);
    }
    return mosaic;
}

void writePgm(const std::string& path, const Mosaic& mosaic) {
    std::ofstream file(path, std::ios::binary);
    file << "P5\n" << mosaic.width << ' ' << mosaic.height << '\n' << mosaic.white << '\n';
    const int sampleBytes = bytesOf(mosaic.white);
    std::vector<char> line(std::size_t(mosaic.width) * sampleBytes);
    for (int y = 0; y < mosaic.height && file; ++y) {
        char* at = line.data();
        for (int x = 0; x < mosaic.width; ++x) {
            const Kuv16u sample = mosaic.row(y)[x];
            if (sampleBytes == 2) *at++ = char(sample >> 8);
            *at++ = char(sample);
        }
        file.write(line.data(), std::streamsize(line.size()));
    }
    file.close();
    if (!file) throw FileError(path, "cannot be written");
}

}  // namespace develop
