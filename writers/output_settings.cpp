#include "writers/output_settings.h"

#include "platform/processor_count.h"

namespace stalwick {

bool UsesWriterThread(const OutputSettings& settings) {
    if (settings.writerThread != WriterThread::kWhenThereAreCores) {
        return settings.writerThread == WriterThread::kOn;
    }
    return UsableProcessors() > 1;
}

}  // namespace stalwick
