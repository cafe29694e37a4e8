#include "orvexclipboardchooser.h"

orvexclipboardchooser::orvexclipboardchooser(QWidget *parent)
    : QWidget(parent)
{
}

orvexclipboardchooser::~orvexclipboardchooser() = default;
