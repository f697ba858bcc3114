#include "decode/jt9platform.h"

namespace outpost
{

const bool Jt9Platform::nativeFormCounts = false;
const Qt::CaseSensitivity Jt9Platform::fileNames = Qt::CaseInsensitive;

} // namespace outpost
