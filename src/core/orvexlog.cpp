#include "orvexlog.h"

Q_LOGGING_CATEGORY(lcWorkbench, "orvex.workbench")
