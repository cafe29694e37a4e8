#include "orvexcmlog.h"

Q_LOGGING_CATEGORY(lcManager, "orvex.connectionmanager", QtInfoMsg)
