#pragma once

#include "plan.h"
#include "reading.h"

#include <cstdio>

namespace irmcore::app::measuring {

/// The header line of CSV; nothing in the other formats.
void printHeader(std::FILE* to, MeasurePlan::Format format);

/// Prints everything of a batch: docs/measuring.md has the fields. `files` are those that the frame
/// was written to.
void printBatch(std::FILE* to, MeasurePlan::Format format, const Batch& batch,
                const QStringList& files);

/// A time as ISO 8601 with milliseconds and the offset from UTC.
QString textOf(const QDateTime& time);

} // namespace irmcore::app::measuring
