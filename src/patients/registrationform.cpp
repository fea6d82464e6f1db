#include "patients/registrationform.h"

namespace tolmar::patients {

namespace {
RegistrationSave& slot()
{
    static RegistrationSave save;
    return save;
}
}  // namespace

void setRegistrationSave(RegistrationSave save) { slot() = std::move(save); }
const RegistrationSave& registrationSave() { return slot(); }

}  // namespace tolmar::patients
