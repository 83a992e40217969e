#include "engine/data_processor.h"

#include <iterator>

#include "engine/file_conversion.h"

namespace stalwick {

std::int32_t DataProcessor::ProcessFile(const std::vector<std::wstring>& files,
                                        const std::wstring& outputDirectory,
                                        const ChannelOptions& channelOptions,
                                        std::uint8_t writeEvents, std::uint8_t writeRawData) {
    recordsProcessed.store(0, std::memory_order_relaxed);
    bytesProcessed.store(0, std::memory_order_relaxed);
    bytesTotal.store(0, std::memory_order_relaxed);
    for (const std::wstring& path : files) {
        FileConversion conversion(
            *this, {path, outputDirectory, channelOptions, writeEvents == 1, writeRawData == 1},
            settings_);
        const std::int32_t status = conversion.Run();
        const std::vector<ConversionDetail> details = conversion.TakeDetails();
        details_.insert(details_.end(), details.begin(), details.end());
        if (status != 0) return -1;
    }
    return 0;
}

}  // namespace stalwick
