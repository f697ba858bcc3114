#pragma once

class QString;

namespace outpost
{

struct SndEvidence;

// Rewrites the live report, and logs what became of it.
void writeEvidenceFile(const QString &path, const SndEvidence &evidence);

} // namespace outpost
