#include "read_file.h"

#include <filesystem>
#include <fstream>

#include "picture.h"

std::vector<uint8_t> readFile(const std::string& path,
                              const std::function<bool(const std::vector<uint8_t>& content)>& goesOn) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        throw Failure(path, "is a folder");
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw Failure(path, "cannot be opened");
    std::vector<uint8_t> content;
    std::vector<char> part(1 << 16);
    while (file.read(part.data(), static_cast<std::streamsize>(part.size())).gcount() > 0) {
        content.insert(content.end(), part.begin(), part.begin() + file.gcount());
        if (!goesOn(content))
            break;
    }
    if (file.bad())
        throw Failure(path, "cannot be read");
    return content;
}
