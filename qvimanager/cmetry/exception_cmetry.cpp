#include "qvimanager/cmetry/exception_cmetry.h"

namespace CMetry {

ExceptionCMetry::ExceptionCMetry(Utilities::String text) : Utilities::ExceptionBusiness(text) {}

} // namespace CMetry
