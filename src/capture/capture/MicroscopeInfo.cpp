#include "capture/MicroscopeInfo.h"

namespace tessary {

MicroscopeList gMicroscopes;
std::shared_ptr<MicroscopeInfo> gCurrMicroscope;

}  // namespace tessary
