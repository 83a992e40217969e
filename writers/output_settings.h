#pragma once

#include <cstdint>

namespace stalwick {

// Records that a writer collects before it hands them on in one call.
inline constexpr std::uint32_t kRecordsPerBlock = 5000;

// Whether a second thread writes while the first one converts.
enum class WriterThread { kWhenThereAreCores, kOff, kOn };

// How outputs are written; what is written does not depend on it.
struct OutputSettings {
    std::uint32_t recordsPerBlock = kRecordsPerBlock;  // 1 to 5000
    bool syncBeforeFinalHeader = true;  // a header that says "closed" never stands over lost data
    WriterThread writerThread = WriterThread::kWhenThereAreCores;
};

// Whether these settings mean a writer thread on this machine.
bool UsesWriterThread(const OutputSettings& settings);

}  // namespace stalwick
