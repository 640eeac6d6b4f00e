// The fourteen public enumerations. Values, duplicates and both ddvTMax bounds
// are part of the public interface: clients persist and compare the numbers.
#pragma once

#include <cstdint>
#include <span>

// One list per enumeration feeds both the C++ enum and its metadata.
#define TYLHART_MEMBERS_enumDDObjectKind(X) \
    X(ddoKUndefined, -1) \
    X(ddoKVariableDef, 0) \
    X(ddoKCommandDef, 1) \
    X(ddoKMenuDef, 2) \
    X(ddoKEditDisplayDef, 3) \
    X(ddoKMethodDef, 4) \
    X(ddoKRefreshDef, 5) \
    X(ddoKUnitDef, 6) \
    X(ddoKWriteAsOneDef, 7) \
    X(ddoKArrayDef, 8) \
    X(ddoKCollectionDef, 9) \
    X(ddoKMax, 9)
#define TYLHART_MEMBERS_enumDDVariableType(X) \
    X(ddvTUndefined, -1) \
    X(ddvTFloat, 0) \
    X(ddvTDouble, 1) \
    X(ddvTInt, 2) \
    X(ddvTUnsigned, 3) \
    X(ddvTEnumerator, 4) \
    X(ddvTBitEnumerator, 5) \
    X(ddvTIndex, 6) \
    X(ddvTASCII, 7) \
    X(ddvTPackedASCII, 8) \
    X(ddvTPassword, 9) \
    X(ddvTBitString, 10) \
    X(ddvTDate, 11) \
    X(ddvTTime, 12) \
    X(ddvTDateAndTime, 13) \
    X(ddvTDuration, 14) \
    X(ddvTMax, 14) \
    X(ddvTTimeValue, 15) \
    X(ddvTMax15, 15)
#define TYLHART_MEMBERS_enumDDStatusClass(X) \
    X(ddsCHardware, 0) \
    X(ddsCSoftware, 1) \
    X(ddsCProcess, 2) \
    X(ddsCMode, 3) \
    X(ddsCData, 4) \
    X(ddsCMisc, 5) \
    X(ddsCEvent, 6) \
    X(ddsCState, 7) \
    X(ddsCSelfCorrecting, 8) \
    X(ddsCCorrectable, 9) \
    X(ddsCUncorrectable, 10) \
    X(ddsCSummary, 11) \
    X(ddsCDetail, 12) \
    X(ddsCMore, 13) \
    X(ddsCCommError, 14) \
    X(ddsCIgnoreInHandheld, 15) \
    X(ddsCMax, 15)
#define TYLHART_MEMBERS_enumDDStatusOtherType(X) \
    X(ddsoTHardware, 0) \
    X(ddsoTSoftware, 1) \
    X(ddsoTProcess, 2) \
    X(ddsoTMode, 3) \
    X(ddsoTData, 4) \
    X(ddsoTMisc, 5) \
    X(ddsoTEvent, 6) \
    X(ddsoTState, 7) \
    X(ddsoTSelfCorrecting, 8) \
    X(ddsoTCorrectable, 9) \
    X(ddsoTUncorrectable, 10) \
    X(ddsoTSummary, 11) \
    X(ddsoTDetail, 12) \
    X(ddsoTMore, 13) \
    X(ddsoTCommError, 14) \
    X(ddsoTIgnoreInHandheld, 15) \
    X(ddsoTMax, 15)
#define TYLHART_MEMBERS_enumDDVariableClassType(X) \
    X(ddvCCorrection, 0) \
    X(ddvCComputation, 1) \
    X(ddvCInput, 2) \
    X(ddvCLocalDisplay, 3) \
    X(ddvCAnalogOutput, 4) \
    X(ddvCFrequency, 5) \
    X(ddvCDiscrete, 6) \
    X(ddvCHart, 7) \
    X(ddvCDevice, 8) \
    X(ddvCDynamic, 9) \
    X(ddvCDiagnostic, 10) \
    X(ddvCService, 11) \
    X(ddvCLocal, 12) \
    X(ddvCMax, 12)
#define TYLHART_MEMBERS_enumDDMethodClass(X) \
    X(ddmCCorrection, 0) \
    X(ddmCComputation, 1) \
    X(ddmCInput, 2) \
    X(ddmCAnalogOutput, 3) \
    X(ddmCLocalInterface, 4) \
    X(ddmCHart, 5) \
    X(ddmCFrequency, 6) \
    X(ddmCDiscrete, 7) \
    X(ddmCDevice, 8) \
    X(ddmCDiagnostic, 9) \
    X(ddmCService, 10) \
    X(ddmCMax, 10)
#define TYLHART_MEMBERS_enumDDOutputStatusClass(X) \
    X(ddosCDV, 0) \
    X(ddosCTV, 1) \
    X(ddosCAO, 2) \
    X(ddosCALL, 3) \
    X(ddosCMax, 3)
#define TYLHART_MEMBERS_enumDDOutputStatusClassMode(X) \
    X(ddosMode0, 0) \
    X(ddosMode1, 1) \
    X(ddosMMax, 1)
#define TYLHART_MEMBERS_enumDDDataItemType(X) \
    X(dddiTUndefined, -1) \
    X(dddiTValue, 0) \
    X(dddiTDefinition, 1) \
    X(dddiTMax, 1)
#define TYLHART_MEMBERS_enumDDResponseCodeType(X) \
    X(ddrcTUndefined, -1) \
    X(ddrcTSUCCESS, 0) \
    X(ddrcTDATA_ENTRY_WARNING, 1) \
    X(ddrcTMISC_WARNING, 2) \
    X(ddrcTDATA_ENTRY_ERROR, 3) \
    X(ddrcTMODE_ERROR, 4) \
    X(ddrcTPROCESS_ERROR, 5) \
    X(ddrcTMISC_ERROR, 6) \
    X(ddrcTMax, 6)
#define TYLHART_MEMBERS_enumDDCommandOperationType(X) \
    X(ddcoTRead, 0) \
    X(ddcoTWrite, 1) \
    X(ddcoTCommand, 2) \
    X(ddcoTMax, 2)
#define TYLHART_MEMBERS_enumDDMenuItemQualificationType(X) \
    X(ddmiqTDisplayValue, 0) \
    X(ddmiqTReadOnly, 1) \
    X(ddmiqTReview, 1) \
    X(ddmiqTMax, 1)
#define TYLHART_MEMBERS_enumDDVariableHandlingType(X) \
    X(ddvhTWrite, 0) \
    X(ddvhTRead, 1) \
    X(ddvhTMax, 1)
#define TYLHART_MEMBERS_enumTimeScaleQualificationType(X) \
    X(sqTNone, 0) \
    X(sqTSeconds, 1) \
    X(sqTMinutes, 2) \
    X(sqTHours, 3)

// Each enumeration with its type library identity: X(name, guid).
#define TYLHART_ENUMERATIONS(X) \
    X(enumDDObjectKind, u"{285215DB-027B-11D5-8152-00E0291221F9}") \
    X(enumDDVariableType, u"{285215DC-027B-11D5-8152-00E0291221F9}") \
    X(enumDDStatusClass, u"{285215DD-027B-11D5-8152-00E0291221F9}") \
    X(enumDDStatusOtherType, u"{285215DE-027B-11D5-8152-00E0291221F9}") \
    X(enumDDVariableClassType, u"{285215DF-027B-11D5-8152-00E0291221F9}") \
    X(enumDDMethodClass, u"{285215E0-027B-11D5-8152-00E0291221F9}") \
    X(enumDDOutputStatusClass, u"{285215E1-027B-11D5-8152-00E0291221F9}") \
    X(enumDDOutputStatusClassMode, u"{285215E2-027B-11D5-8152-00E0291221F9}") \
    X(enumDDDataItemType, u"{285215E3-027B-11D5-8152-00E0291221F9}") \
    X(enumDDResponseCodeType, u"{285215E4-027B-11D5-8152-00E0291221F9}") \
    X(enumDDCommandOperationType, u"{285215E5-027B-11D5-8152-00E0291221F9}") \
    X(enumDDMenuItemQualificationType, u"{285215E6-027B-11D5-8152-00E0291221F9}") \
    X(enumDDVariableHandlingType, u"{285215E7-027B-11D5-8152-00E0291221F9}") \
    X(enumTimeScaleQualificationType, u"{3011BB1A-F89F-4304-B971-CDE7B9CC97EE}")

namespace tylhart {

#define TYLHART_ENUMERATOR(name, value) name = value,
#define TYLHART_DECLARE_ENUM(enumName, guid) \
    enum enumName : std::int32_t { TYLHART_MEMBERS_##enumName(TYLHART_ENUMERATOR) };
TYLHART_ENUMERATIONS(TYLHART_DECLARE_ENUM)
#undef TYLHART_DECLARE_ENUM
#undef TYLHART_ENUMERATOR

// Metadata for the type library listing and scripting clients.
struct EnumMember {
    const char16_t* name;
    std::int32_t value;
};
struct EnumInfo {
    const char16_t* name;
    const char16_t* guid;
    std::span<const EnumMember> members;
};
std::span<const EnumInfo> enumerations();

}  // namespace tylhart
