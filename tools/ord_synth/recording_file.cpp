// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/recording_file.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

namespace stalwick {

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

std::string Reason(int error) {
    return std::generic_category().message(error);
}

// Returns 0, or the error number of the call that failed.
int WriteAll(const SynthOptions& options, FileHandle file, SynthSummary& summary) {
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    int error = 0;
    const auto sink = [&file, &error](std::span<const std::uint8_t> bytes) {
        errno = 0;
        if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size()) return true;
        error = errno != 0 ? errno : EIO;
        return false;
    };
    summary = MakeRecording(options, sink);
    errno = 0;
    if (std::fclose(file.release()) != 0 && error == 0) error = errno != 0 ? errno : EIO;
    return error;
}

}  // namespace

std::string WriteRecordingFile(const SynthOptions& options, const std::string& path,
                               bool replaceExisting, SynthSummary& summary) {
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        return path + " is a directory or a device; give the name of a file";
    }
    if (std::filesystem::exists(status) && !replaceExisting) {
        return path + " already exists; give another name, or --force to replace it";
    }
    const std::string partPath = path + ".part";
    FileHandle file(std::fopen(partPath.c_str(), "wb"));
    if (!file) return "cannot create " + partPath + ": " + Reason(errno);
    if (const int error = WriteAll(options, std::move(file), summary); error != 0) {
        std::filesystem::remove(partPath, ignored);
        return "cannot write " + partPath + ": " + Reason(error) +
               "; the incomplete file was removed";
    }
    if (!summary.damageMet) {
        std::filesystem::remove(partPath, ignored);
        return path + " would have " + std::to_string(summary.bytes) +
               " bytes, too few for the requested damage; nothing was made";
    }
    std::error_code renameError;
    std::filesystem::rename(partPath, path, renameError);
    if (renameError) {
        std::filesystem::remove(partPath, ignored);
        return "cannot rename " + partPath + " to " + path + ": " + renameError.message() +
               "; the file was removed";
    }
    return {};
}

}  // namespace stalwick
