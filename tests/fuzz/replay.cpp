// In place of a fuzzer: calls the target with given files, or all files of given directories.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

int main(int count, char** arguments) {
    LLVMFuzzerInitialize(&count, &arguments);
    int inputs = 0;
    const auto replay = [&](const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        std::vector<char> input(std::istreambuf_iterator<char>(file), {});
        if (!file) {
            std::cerr << "cannot read " << path << std::endl;
            std::exit(2);
        }
        std::cerr << path << std::endl;  // the last one is what ended the process
        LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(input.data()), input.size());
        ++inputs;
    };
    for (int i = 1; i < count; ++i) {
        if (!std::filesystem::is_directory(arguments[i])) replay(arguments[i]);
        else {
            for (const auto& each : std::filesystem::directory_iterator(arguments[i])) replay(each.path());
        }
    }
    std::cout << inputs << " inputs" << std::endl;
    return inputs > 0 ? 0 : 2;
}
