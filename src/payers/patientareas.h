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
    // message; so is a name already on the list, by the database.
    void save(const QString& oldName, const QString& name);
    void remove(const QString& name);

private:
    AppContext& m_ctx;
};

}  // namespace tolmar
