#include "foundation/Log.h"

Q_LOGGING_CATEGORY(lcTessary, "tessary", QtWarningMsg)
