#include "app/FenMultiFunctionalViewController.h"

void FenMultiFunctionalViewController::initialize() {
    displayName = QStringLiteral("Default View");
}
