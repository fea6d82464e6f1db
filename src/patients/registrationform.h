#pragma once
// What the registration screen holds when its Save is pressed: every field as typed or
// chosen, and the screen's working state. The screen fills it and hands it to the save,
// which never looks at a widget.

#include <QDate>
#include <QString>

#include <functional>

namespace tolmar {
class AppContext;
}

namespace tolmar::patients {

struct RegistrationForm {
    // Working state of the screen.
    bool isEdit = false;
    bool isAddingDependant = false;
    QString editPNo;
    QString principalPNo;
    QString selectedRetainID;
    QString selectedCoyName;
    QString selectedRetainCode;
    QString selectedClientType;
    QString selectedClientCat;
    QString loadedRetainID;
    QString loadedCoyName;
    QString selectedPurpose;  // "SCREENING" for the screening purposes
    double carryOverDebt = 0;
    bool pendingCardRenewal = false;
    // The instant fee picked on frmInstantFee for this visit's bill, if any.
    bool instantFeePending = false;
    QString instantFeeItem;
    double instantFeeAmount = 0;
    double screeningAmount = 0;
    double consultationAmount = 0;

    // The patient, in the screen's tab order. Lists hold the chosen text ("" for none);
    // dates are invalid when left blank.
    QString newReg;  // "NEW" or "EXISTING"
    QString title;
    QString surname;
    QString firstName;
    QString homeAddress;
    QString area;
    QString officeAddress;
    QString phone;
    QString email;
    QString sex;
    QDate dob;
    QString maturity;
    QString cardDuration;
    QString cardType;
    QString systemNo;  // txtSupp: "" until the save draws one
    QString cardNo;    // txtOLD as shown (a preview while it is to be generated)
    QDate regDate;
    QDate expiryDate;
    QString company;   // the cboPat entry, "{name} [{retainID}]"
    QString enrolleeNo;
    QString plan;      // "{PlanName} [{PlanID}]" or "NIL"
    QString feeForService;
    QString hmoReferral;
    QString introducedBy;  // the empID between the brackets
    QString maritalStatus;
    QString bloodGroup;
    QString genotype;
    QString occupation;
    QString religion;
    QString nextOfKin;
    QString nokPhone;
    QString nokRelationship;
    QString nokAddress;
    QString admissionLimit;

    // The attendance taken with the save.
    bool takeAttendance = true;
    QString clinicID;
    QString clinicName;
    QString purpose;
    QString doctorEmpID;  // "" when the clinic had no doctor
    QDate apptDate;
    QString apptTime;
};

// The registration save, plugged in by the module that owns it. It returns the PNo saved;
// it throws CheckFailed for a field that stops it, like any command.
using RegistrationSave = std::function<QString(AppContext&, const RegistrationForm&)>;
void setRegistrationSave(RegistrationSave save);
const RegistrationSave& registrationSave();

}  // namespace tolmar::patients
