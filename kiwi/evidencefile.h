#pragma once

class QString;

namespace outpost
{

struct SndEvidence;

// Replaces the live report at `path` and logs the result.
void writeEvidenceFile(const QString &path, const SndEvidence &evidence);

} // namespace outpost
