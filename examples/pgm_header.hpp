// What stands at the beginning of a binary PGM file.
#pragma once

#include <istream>
#include <string>

namespace examples {

struct PgmHeader {
    int width, height;  // at least 1
    int maximum;        // 1 to 65535: the sample that stands for white

    // Samples above 255 take two bytes, the upper one first.
    int sampleBytes() const { return maximum > 255 ? 2 : 1; }
};

// Behind the magic number P5. Throws FileError.
PgmHeader readPgmHeader(std::istream& file, const std::string& path);

}  // namespace examples
