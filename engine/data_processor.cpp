// SPDX-License-Identifier: BSD-3-Clause
#include "engine/data_processor.h"

#include "engine/file_conversion.h"
#include "engine/output_directory.h"

namespace stalwick {

std::int32_t DataProcessor::ProcessFile(const std::vector<std::wstring>& files,
                                        const std::wstring& outputDirectory,
                                        const ChannelOptions& channelOptions,
                                        std::uint8_t writeEvents, std::uint8_t writeRawData) {
    recordsProcessed.store(0, std::memory_order_relaxed);
    bytesProcessed.store(0, std::memory_order_relaxed);
    bytesTotal.store(0, std::memory_order_relaxed);
    for (const std::wstring& path : files) {
        const FileConversionRequest request{
            path, outputDirectory, channelOptions, writeEvents == 1, writeRawData == 1, *parallel_};
        // Remains until a better one replaces it: what a conversion throws passes through.
        lastAccount_ = {};
        lastAccount_.failed = true;
        lastAccount_.recording = path;
        lastAccount_.outputDirectory = OutputDirectoryOf(path, outputDirectory);
        FileConversion conversion(*this, request, settings_);
        const std::int32_t status = conversion.Run();
        lastAccount_ = conversion.TakeAccount();
        lastAccount_.failed = status != 0;
        details_.insert(details_.end(), lastAccount_.details.begin(), lastAccount_.details.end());
        if (status != 0) return -1;
    }
    return 0;
}

}  // namespace stalwick
