#include "pgm.hpp"

#include <algorithm>
#include <fstream>

#include "../pgm_header.hpp"
#include "../program.hpp"
#include "files.hpp"
#include "progress.hpp"

using namespace examples;

namespace develop {

Mosaic readPgm(const std::string& path) {
    std::ifstream file = openInput(path);
    file.ignore(2);  // the magic number
    const PgmHeader header = readPgmHeader(file, path);
    const auto [width, height, maximum] = header;
    if (width > largestSide || height > largestSide)
        throw FileError(path, "claims " + std::to_string(width) + " x " + std::to_string(height) + " samples; " +
                                  std::to_string(largestSide) + " a side are the limit");
    checkPgmSamples(file, path, header);

    const int sampleBytes = header.sampleBytes();
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
    const PgmHeader header{mosaic.width, mosaic.height, mosaic.white};
    file << "P5\n" << header.width << ' ' << header.height << '\n' << header.maximum << '\n';
    const int sampleBytes = header.sampleBytes();
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
