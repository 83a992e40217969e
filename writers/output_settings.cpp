#include "writers/output_settings.h"

#include <thread>

namespace stalwick {

bool UsesWriterThread(const OutputSettings& settings) {
    if (settings.writerThread != WriterThread::kWhenThereAreCores) {
        return settings.writerThread == WriterThread::kOn;
    }
    return std::thread::hardware_concurrency() > 1;
}

}  // namespace stalwick
