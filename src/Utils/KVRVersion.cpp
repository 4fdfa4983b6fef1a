#include <kovra/KVRVersion.h>

const char KovraSDKVersionString[] = KOVRA_SDK_VERSION_STRING;
const double KovraSDKVersionNumber = KOVRA_SDK_VERSION_NUMBER;
