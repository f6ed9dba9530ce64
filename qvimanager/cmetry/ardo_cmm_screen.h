#ifndef QVIMANAGER_CMETRY_ARDO_CMM_SCREEN_H
#define QVIMANAGER_CMETRY_ARDO_CMM_SCREEN_H

// ArdoCMMScreen: the interface of a plug-in component, not part of this
// library, that converts a Lab colour vector to an RGB one for a screen. The
// RGB conversion resolves it under the name "ArdoCMMScreen" for every
// conversion and falls back on its built-in table when there is none or when
// the component raises.
//
// ConvertLabToRGB is its first virtual operation behind those of Component.

#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/components/component.h"

namespace CMetry {

class ArdoCMMScreen : public Utilities::Component {
public:
    // The RGB vector of a Lab vector.
    virtual QVColorVector ConvertLabToRGB(const QVColorVector& lab) = 0;
};

} // namespace CMetry

#endif
