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

// Behind the header: throws FileError if the file holds fewer samples than it claims, so that memory is taken only for those that are
// there. Of what is no regular file nobody knows.
void checkPgmSamples(std::istream& file, const std::string& path, const PgmHeader& header);

}  // namespace examples
