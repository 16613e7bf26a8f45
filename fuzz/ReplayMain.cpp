// The main of a fuzz target outside the fuzzing build: runs it once over each file of the folders and files given.
// Fails when there was nothing to run.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void Replay(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    const std::vector<char> text{std::istreambuf_iterator<char>(stream),
                                 std::istreambuf_iterator<char>()};
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

}  // namespace

int main(int count, char** arguments)
{
    int replayed = 0;
    for (int i = 1; i < count; ++i) {
        const std::filesystem::path path = arguments[i];
        if (!std::filesystem::is_directory(path)) {
            Replay(path);
            ++replayed;
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            Replay(entry.path());
            ++replayed;
        }
    }
    std::printf("%d inputs replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
