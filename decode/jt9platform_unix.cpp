#include "decode/jt9platform.h"

namespace outpost
{

const bool Jt9Platform::nativeFormCounts = true;
const Qt::CaseSensitivity Jt9Platform::fileNames = Qt::CaseSensitive;

} // namespace outpost
