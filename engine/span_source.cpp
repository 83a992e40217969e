#include "engine/span_source.h"

namespace stalwick {

void SpanSource::Read(DecodedSpan& span) {
    span.status = reader_.GetData(span.packets, span.endOfFile);
    span.bytesRead = reader_.BytesRead();
    span.readFailedAfter = reader_.ReadHasFailed();
}

}  // namespace stalwick
