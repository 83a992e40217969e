#include "writers/output_naming.h"

#include <algorithm>
#include <random>

#include "platform/file_system.h"
#include "platform/local_time.h"
#include "platform/paths.h"
#include "platform/random_seed.h"
#include "platform/text_encoding.h"

namespace stalwick {

namespace {

bool IsTaken(const std::wstring& path) {
    return QueryPath(path) == PathKind::kFile;
}

// A text stream would swallow a failing allocation and give half a text.
std::wstring PadWithZeros(std::int32_t number, std::size_t width) {
    const std::wstring digits = std::to_wstring(number);
    return std::wstring(width - std::min(width, digits.size()), L'0') + digits;
}

std::wstring NumberSuffix(std::int32_t number) {
    return L'_' + PadWithZeros(number, 2);
}

// A random UUID (version 4, variant 1) from one seed.
Uuid MakeUuid() {
    std::mt19937_64 generator(RandomSeed());
    Uuid uuid{};
    for (std::size_t half = 0; half < 2; ++half) {
        const std::uint64_t bits = generator();
        for (std::size_t i = 0; i < 8; ++i) {
            uuid[half * 8 + i] = static_cast<std::uint8_t>(bits >> (8 * i));
        }
    }
    uuid[6] = (uuid[6] & 0x0FU) | 0x40U;
    uuid[8] = (uuid[8] & 0x3FU) | 0x80U;
    return uuid;
}

}  // namespace

std::wstring BuildOutputFilePath(const std::wstring& directory, const std::wstring& namePart1,
                                 const std::wstring& namePart2, const std::wstring& extension) {
    std::wstring path = directory + kPathSeparator + namePart1 + namePart2 + extension;
    if (!IsTaken(path)) return path;
    return WidePath(MakeUniqueFileName(NarrowPath(path)));
}

std::string MakeUniqueFileName(const std::string& path, const SuffixMaker& suffixMaker) {
    if (path.empty()) return {};
    const std::wstring whole = WidePath(path);
    const auto point = whole.rfind(L'.');
    const std::wstring stem = whole.substr(0, point);
    const std::wstring extension = point == std::wstring::npos ? L"" : whole.substr(point);

    std::wstring candidate = whole;
    for (std::int32_t number = 1; IsTaken(candidate); ++number) {
        candidate = stem + (suffixMaker ? suffixMaker(number) : NumberSuffix(number)) + extension;
    }
    return NarrowPath(candidate);
}

std::int32_t CreationResult(SystemErrorCode code, const std::wstring& path) {
    if (code == 0) return 0;
    return WasNameTaken(code, path) ? kNameTaken : -1;
}

std::int32_t CreateUnderFreeName(const std::function<std::wstring()>& choosePath,
                                 const std::function<std::int32_t(const std::wstring&)>& create,
                                 std::wstring& path) {
    for (;;) {
        path = choosePath();
        const std::int32_t result = create(path);
        if (result != kNameTaken) return result;
    }
}

void InitOutputFileRecord(const FileWriterContainer& container, OutputFileRecord& record,
                          const OpenedFile& opened) {
    record.handle = opened.handle;
    record.fileUuid = MakeUuid();
    record.filePath = opened.filePath;
    record.timeCreated = FormatLocalTime();
    record.acqEntName = opened.acqEntName;
    record.samplingFrequency = opened.samplingFrequency;
    record.interpolationFrequency = opened.samplingFrequency;
    record.channelIndex = opened.channelIndex;
    record.timestampOffset = container.timestampOffset;
    record.phaseModulus = container.phaseModulus;
}

std::wstring FormatLocalTime() {
    const LocalTime now = CurrentLocalTime();
    return PadWithZeros(now.year, 4) + L'/' + PadWithZeros(now.month, 2) + L'/' +
           PadWithZeros(now.day, 2) + L' ' + PadWithZeros(now.hour, 2) + L':' +
           PadWithZeros(now.minute, 2) + L':' + PadWithZeros(now.second, 2);
}

}  // namespace stalwick
