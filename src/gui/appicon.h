#pragma once

#include <QIcon>

// The program's icon: an oil drop with a water drop inside, drawn in code
// so no image files need to ship.
QIcon appIcon();
