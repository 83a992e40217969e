// SPDX-License-Identifier: BSD-3-Clause

// The least that a conversion can cost: floor RECORDING DIRECTORY SIZES
// Reads RECORDING 50,000 bytes at a time. Meanwhile the files that SIZES lists, one per line
// ("SIZE NAME"), grow in DIRECTORY to their sizes, in pieces of 256 KB from one buffer that stays
// in the cache. It does nothing else.

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t kRead = 50000;
constexpr std::size_t kPiece = std::size_t{256} << 10U;

struct GrowingFile {
    int descriptor = -1;
    std::size_t size = 0;
    std::size_t written = 0;
};

void Require(bool succeeded, const char* what) {
    if (succeeded) return;
    std::perror(what);
    std::exit(1);
}

std::vector<GrowingFile> CreateFiles(const std::string& directory, const char* list) {
    std::vector<GrowingFile> files;
    std::ifstream sizes(list);
    GrowingFile file;
    for (std::string name; sizes >> file.size >> name;) {
        const std::string path = directory + "/" + name;
        file.descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        Require(file.descriptor >= 0, path.c_str());
        files.push_back(file);
    }
    errno = ENOENT;
    Require(!files.empty(), list);
    return files;
}

// Writes all whole pieces up to `end`; also the rest if the file ends there.
void Grow(GrowingFile& file, std::size_t end, const std::vector<char>& buffer) {
    while (file.written < end && (end == file.size || end - file.written >= kPiece)) {
        const std::size_t count = std::min(end - file.written, kPiece);
        const ssize_t taken = ::write(file.descriptor, buffer.data(), count);
        Require(taken > 0, "write");
        file.written += static_cast<std::size_t>(taken);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: floor RECORDING DIRECTORY SIZES\n");
        return 2;
    }
    const int recording = ::open(argv[1], O_RDONLY | O_CLOEXEC);
    struct stat status {};
    Require(recording >= 0 && ::fstat(recording, &status) == 0, argv[1]);
    Require(::mkdir(argv[2], 0777) == 0, argv[2]);
    std::vector<GrowingFile> files = CreateFiles(argv[2], argv[3]);

    std::vector<char> input(kRead);
    const std::vector<char> buffer(kPiece, 'f');
    const double whole = static_cast<double>(status.st_size);
    double done = 0.0;
    for (ssize_t count = 1; count > 0; done += static_cast<double>(count)) {
        count = ::read(recording, input.data(), input.size());
        Require(count >= 0, argv[1]);
        const double part = std::min(done / whole, 1.0);
        for (GrowingFile& file : files) {
            Grow(file, static_cast<std::size_t>(static_cast<double>(file.size) * part), buffer);
        }
    }
    for (GrowingFile& file : files) {
        Grow(file, file.size, buffer);
        Require(::close(file.descriptor) == 0, "close");
    }
    ::close(recording);
    return 0;
}
