#pragma once

#include <QLoggingCategory>

// Every line the stand-in logs (protocol requests and document server
// requests) goes through this category: silence it with
// QT_LOGGING_RULES="orvex.connectionmanager.info=false".
Q_DECLARE_LOGGING_CATEGORY(lcManager)
