#include "uiresources.h"

#include <QtGlobal>

// Outside any namespace: Q_INIT_RESOURCE declares the initialiser where it is called.
void initUiResources()
{
    static const bool done = [] {
        Q_INIT_RESOURCE(colcal_ui);
        return true;
    }();
    Q_UNUSED(done);
}
