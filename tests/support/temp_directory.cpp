// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/temp_directory.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

#include "platform/paths.h"
#include "platform/text_encoding.h"

namespace stalwick::test {
namespace {

namespace fs = std::filesystem;

fs::path ToPath(const std::wstring& path) {
    const std::string narrow = ToUtf8(path);
    return std::u8string(narrow.begin(), narrow.end());
}

std::string ToUtf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

// The tests create tens of thousands of small files: in memory if there is room.
fs::path Root() {
    constexpr std::uintmax_t kRoomNeeded = 512U << 20U;
    const fs::path memory = "/dev/shm";
    std::error_code missing;
    const fs::space_info space = fs::space(memory, missing);
    const bool hasRoom = kPathSeparator == L'/' && !missing && space.available >= kRoomNeeded;
    return hasRoom ? memory : fs::temp_directory_path();
}

std::wstring FreshPath() {
    static std::atomic<unsigned> count{0};
    static const unsigned run = std::random_device{}();
    const std::string name =
        "stalwick-test-" + std::to_string(run) + "-" + std::to_string(count.fetch_add(1));
    return FromUtf8(ToUtf8(Root() / name));
}

}  // namespace

TempDirectory::TempDirectory() : path_(FreshPath()) {
    MakeDirectory(path_);
}

TempDirectory::~TempDirectory() {
    std::error_code ignored;
    fs::remove_all(ToPath(path_), ignored);
}

std::wstring TempDirectory::Path(const std::wstring& name) const {
    return path_ + kPathSeparator + name;
}

void WriteFile(const std::wstring& path, const std::string& bytes) {
    std::ofstream file(ToPath(path), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw std::runtime_error("cannot write " + ToUtf8(path));
}

std::string ReadFile(const std::wstring& path) {
    std::ifstream file(ToPath(path), std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + ToUtf8(path));
    file.seekg(0, std::ios::end);
    std::string bytes(static_cast<std::size_t>(file.tellg()), '\0');
    file.seekg(0);
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

void MakeDirectory(const std::wstring& path) {
    fs::create_directory(ToPath(path));
}

void RemoveFile(const std::wstring& path) {
    fs::remove(ToPath(path));
}

bool Exists(const std::wstring& path) {
    return fs::exists(fs::symlink_status(ToPath(path)));
}

std::set<std::string> NamesIn(const std::wstring& directory) {
    std::set<std::string> names;
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(ToPath(directory), missing)) {
        names.insert(ToUtf8(entry.path().filename()));
    }
    return names;
}

std::map<std::string, std::string> FilesIn(const std::wstring& directory) {
    std::map<std::string, std::string> files;
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(ToPath(directory), missing)) {
        if (!entry.is_regular_file()) continue;
        const std::string name = ToUtf8(entry.path().filename());
        files[name] = ReadFile(directory + kPathSeparator + FromUtf8(name));
    }
    return files;
}

}  // namespace stalwick::test
