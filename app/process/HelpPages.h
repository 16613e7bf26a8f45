// What the help menu opens.
#pragma once

#include <QString>

class QWidget;

// "item_help", "item_faq", "item_about" or "item_support". A build without a maker's site has no pages there: then the guide that
// was installed is opened, or a box says where the first page to read is.
void OpenHelpPage(QWidget* parent, const QString& item);
