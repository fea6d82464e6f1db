#pragma once
// The residential areas a patient's address is picked from.

#include <QStringList>

namespace tolmar {

class AppContext;

class PatientAreas {
public:
    explicit PatientAreas(AppContext& ctx);
    QStringList all();
    // Adds (oldName empty) or renames an area. A blank name is refused with the screen's
    // message; a name already on the list with "That area already exists".
    void save(const QString& oldName, const QString& name);
    void remove(const QString& name);

private:
    AppContext& m_ctx;
};

}  // namespace tolmar
