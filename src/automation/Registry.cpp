#include "tylhart/automation/Registry.hpp"

#include "tylhart/automation/DDEnums.hpp"
#include "tylhart/commands/CCommand.hpp"
#include "tylhart/commands/CDataItem.hpp"
#include "tylhart/commands/CResponseCode.hpp"
#include "tylhart/constructs/CMethod.hpp"
#include "tylhart/constructs/Collections.hpp"
#include "tylhart/constructs/EditDisplays.hpp"
#include "tylhart/constructs/Menus.hpp"
#include "tylhart/constructs/Relations.hpp"
#include "tylhart/containers/CDefinitionList.hpp"
#include "tylhart/containers/CDefinitionSet.hpp"
#include "tylhart/containers/CObjectSet.hpp"
#include "tylhart/containers/CValueList.hpp"
#include "tylhart/containers/CValueSet.hpp"
#include "tylhart/core/CDefinition.hpp"
#include "tylhart/core/CObject.hpp"
#include "tylhart/variables/CCharArray.hpp"
#include "tylhart/variables/COutputStatusClassSet.hpp"
#include "tylhart/variables/CType.hpp"
#include "tylhart/variables/CVariable.hpp"
#include "tylhart/variables/EnumeratorSets.hpp"
#include "tylhart/variables/FlagClasses.hpp"

namespace tylhart::automation {
namespace {

// A class is wired in by naming its member table instead of nullptr (and
// including its header above).
#define TYLHART_CLASS_ROW(Class, clsid, iid, info) \
    ClassEntry{u"" #Class, u"TylHartTypes." #Class, u"" clsid, u"" iid, info}

// The order is the type library's; listings follow it.
constexpr ClassEntry classTable[] = {
    TYLHART_CLASS_ROW(CDefinition, "{65488EEC-01BE-11D5-8151-00E0291221F9}", "{729158C8-9D51-4DB2-96AA-0E9801C2A6FB}", &CDefinition::staticClassInfo),
    TYLHART_CLASS_ROW(DDEnums, "{016E9349-5C94-11D4-80BA-00E0291221F9}", "{BE1382EE-8EA2-41FA-880F-0FEE95BE27CC}", &DDEnums::staticClassInfo),
    TYLHART_CLASS_ROW(CDefinitionList, "{EC22478D-7E13-42C3-88D6-1C2F7F7BD7D6}", "{AD40BF40-83D5-4628-9DCA-40D6D81A7B55}", &CDefinitionList::staticClassInfo),
    TYLHART_CLASS_ROW(CValueSet, "{9B497CAB-4981-43A0-BC81-AF4EB809BEAB}", "{720A70A7-6CA6-47CD-9A77-F1C738E68D5D}", &CValueSet::staticClassInfo),
    TYLHART_CLASS_ROW(DDTypes, "{7EB9CEBC-2B73-4502-BEA1-32EDE90E13F6}", "{7EABD1AB-CBC0-40D8-A1B9-CF1A15D171C0}", &DDTypes::staticClassInfo),
    TYLHART_CLASS_ROW(COutputStatusClass, "{356CDFC9-73C3-4006-B036-00CF8C332B00}", "{BC0C6444-84BF-4A1C-B8E8-DF35669CBB39}", &COutputStatusClass::staticClassInfo),
    TYLHART_CLASS_ROW(COutputStatusClassSet, "{B2184AC2-6953-4F5C-8538-A2024689E659}", "{708DD2CC-B4DC-4355-89F8-AE6C4A2D5747}", &COutputStatusClassSet::staticClassInfo),
    TYLHART_CLASS_ROW(CDataItem, "{1C8B6558-86FF-40F5-B6ED-249E01C8CC95}", "{DD5CB9B1-A8DD-40AB-9B5A-13276AF39AD7}", &CDataItem::staticClassInfo),
    TYLHART_CLASS_ROW(CDataItemList, "{E05427C9-9DB2-42D8-A784-1BE6D95F746F}", "{1DC761BE-0F8F-4E9B-B382-BD04103EE901}", &CDataItemList::staticClassInfo),
    TYLHART_CLASS_ROW(CEnumerator, "{AD90D09D-C162-4D73-878E-5A69FAA9CC54}", "{4866107D-0C09-4B67-99E1-A6855464A12D}", &CEnumerator::staticClassInfo),
    TYLHART_CLASS_ROW(CResponseCode, "{6F93FF7B-373A-4C35-B3FA-921B4192D48F}", "{E668B141-0B03-4BD3-8CA9-F647384D557A}", &CResponseCode::staticClassInfo),
    TYLHART_CLASS_ROW(CResponseCodeSet, "{D8318A64-A02D-4328-9B32-BD0C4CD7FB81}", "{C8179C22-17C2-4D5A-B3C8-C898A6161BC5}", &CResponseCodeSet::staticClassInfo),
    TYLHART_CLASS_ROW(CValueList, "{A700C417-C632-4ECD-AC88-CBA23168E225}", "{ED5D0DF3-4815-46F6-8720-BCCE40E7AC15}", &CValueList::staticClassInfo),
    TYLHART_CLASS_ROW(CTransaction, "{00E086B6-4473-4BF2-8709-F2CDDFCBDDBA}", "{E9F8FF91-7CD8-4C13-B3B3-45581D531B06}", &CTransaction::staticClassInfo),
    TYLHART_CLASS_ROW(CTransactionSet, "{2DC5BC0B-68C6-48F3-9F4E-9B2C969F53F7}", "{5BD2588E-7C26-49BD-BD8D-362F0D2F6814}", &CTransactionSet::staticClassInfo),
    TYLHART_CLASS_ROW(CDefinitionSet, "{F9111B5F-6C8A-4137-B148-04BEB4FB07D0}", "{D1E12A4E-8772-4EC8-9758-8B0053397430}", &CDefinitionSet::staticClassInfo),
    TYLHART_CLASS_ROW(CCommand, "{7FE08CD9-8894-42E4-A37C-0BBC3F9039AC}", "{29D1D983-F0C9-427E-9A68-DB10BEBA5591}", &CCommand::staticClassInfo),
    TYLHART_CLASS_ROW(CStatusClass, "{796D8C3C-ECE0-413E-9AD8-5500E9F6B970}", "{C9BB3A6D-F289-4720-ABB4-BB1D373F64BB}", &CStatusClass::staticClassInfo),
    TYLHART_CLASS_ROW(CVariableClass, "{11055D50-3DEE-43F8-BD6A-18953902C90D}", "{5CC55F24-6F93-4BE8-A475-6DB710714EEA}", &CVariableClass::staticClassInfo),
    TYLHART_CLASS_ROW(CBitEnumerator, "{62D8F59F-49B1-4BEE-A37D-77E7A4290722}", "{109B4D45-C07A-419D-89F4-3415360DF3A0}", &CBitEnumerator::staticClassInfo),
    TYLHART_CLASS_ROW(CMenu, "{895D9BBF-60CF-43B4-99AC-1D859886F197}", "{71A9BCB3-6585-4712-9427-628AFB756EAE}", &CMenu::staticClassInfo),
    TYLHART_CLASS_ROW(CMenuItemList, "{A9551AD8-4A7E-4A6A-B399-08494AA883EE}", "{39B1614C-C2A1-44C0-983D-AC80F35A439F}", &CMenuItemList::staticClassInfo),
    TYLHART_CLASS_ROW(CMenuItem, "{23EB8919-16AC-49A2-AE17-820700CDBBAE}", "{9DF5AE3C-B0EC-4F1A-B9C5-94840FADEF25}", &CMenuItem::staticClassInfo),
    TYLHART_CLASS_ROW(CMember, "{0D421E5D-A704-4336-A2A0-46954B691A64}", "{DE9F05D9-A87F-47D9-A778-32140C990001}", &CMember::staticClassInfo),
    TYLHART_CLASS_ROW(CElementList, "{5C38D006-B8E9-47C6-92D7-6BD6A02ABB1B}", "{F78CECCD-B492-47D0-A3EE-B9B3A1C4CC6E}", &CElementList::staticClassInfo),
    TYLHART_CLASS_ROW(CElement, "{A735CAD4-A5E8-4EDA-BEC2-BF8784B4EF7C}", "{A424A6FE-1A8A-4FC0-B4F7-CFFC5F806249}", &CElement::staticClassInfo),
    TYLHART_CLASS_ROW(CMemberSet, "{4469DF0B-86F4-46C4-9268-AA6B98007E1D}", "{BB9DCF7C-D9DF-4B9F-8461-AA679EB916C7}", &CMemberSet::staticClassInfo),
    TYLHART_CLASS_ROW(CCollection, "{C39E2F1C-0733-40A0-BE6F-4AAFCD6ED4A4}", "{E149AA3C-CAC2-41F6-9422-A95A28C23D57}", &CCollection::staticClassInfo),
    TYLHART_CLASS_ROW(CArray, "{BE1E614C-0FA8-4638-B34B-10CA56119801}", "{2ED13D44-6B37-4FF8-B343-691472BFBD79}", &CArray::staticClassInfo),
    TYLHART_CLASS_ROW(CWriteAsOne, "{F94B9BD0-C4AD-449A-8FBC-9328E5B32ACC}", "{9C460D32-7875-4A39-8503-3463865B3090}", &CWriteAsOne::staticClassInfo),
    TYLHART_CLASS_ROW(CUnit, "{774D5FC1-422A-4C3B-B535-29AEDE3560E5}", "{31036A71-7A8C-4461-8781-5820FEE01AC9}", &CUnit::staticClassInfo),
    TYLHART_CLASS_ROW(CRefresh, "{96B5A483-EC4D-49DD-930F-7C717C321345}", "{27B73E28-B221-481B-8D13-99DA6223CFC3}", &CRefresh::staticClassInfo),
    TYLHART_CLASS_ROW(CVariableDefinitionSet, "{783E1629-A8B3-47BD-8EB0-2741B691899A}", "{B48AA6E3-EBF7-41C6-89B2-A438AA4A8948}", &CVariableDefinitionSet::staticClassInfo),
    TYLHART_CLASS_ROW(CMethodClass, "{81051B34-001F-40A4-936B-62B475E9C513}", "{851B0CE9-6A03-4E94-AC6C-1C57F17407D1}", &CMethodClass::staticClassInfo),
    TYLHART_CLASS_ROW(CMethod, "{8FF1A18B-9D0C-4492-ABCD-C386B04BE0D0}", "{1298B72F-778F-4C42-A474-5E869F3D1ACD}", &CMethod::staticClassInfo),
    TYLHART_CLASS_ROW(CObject, "{DED357F0-1238-4748-A3B9-FB15EA22035F}", "{C18E4D99-DC67-4A6D-95D3-93CC1E524FC0}", &CObject::staticClassInfo),
    TYLHART_CLASS_ROW(CTransactionDef, "{9B5563BC-4928-4BDF-B7F7-A65558832B7E}", "{83AAD6FA-410D-4713-BCBA-410E0EE0CCF0}", &CTransactionDef::staticClassInfo),
    TYLHART_CLASS_ROW(CType, "{113218AE-E4F5-41FB-8F48-9D6186873ACA}", "{934F2C43-D1F5-4925-B7A6-BC9D4B35A663}", &CType::staticClassInfo),
    TYLHART_CLASS_ROW(CVariable, "{9439C1CD-5332-4AA2-B705-0C7CE8D76C5C}", "{53E47713-8A46-4618-8BA4-F6BF4F85791C}", &CVariable::staticClassInfo),
    TYLHART_CLASS_ROW(CEditDisplay, "{614696EB-A96F-4226-B02C-1A111ED03016}", "{21A67C18-87D8-4B3A-845B-C9CF43A9370C}", &CEditDisplay::staticClassInfo),
    TYLHART_CLASS_ROW(CEditDisplayItem, "{F8BE6B19-773F-4658-ADAB-43E50A75FA43}", "{1CFE675E-565D-450A-8AEE-B5634F99E0E1}", &CEditDisplayItem::staticClassInfo),
    TYLHART_CLASS_ROW(CEditDisplayItemList, "{414C2D97-6E95-42D9-8F4F-84A1BBCEEEA9}", "{389DFDD1-971C-4708-9957-C28968DB472B}", &CEditDisplayItemList::staticClassInfo),
    TYLHART_CLASS_ROW(CVariableItem, "{D20A85C5-CEAE-4D79-A54E-7EF48DF7C732}", "{82E8651C-C9CA-4978-BE3E-58F01A2621FD}", &CVariableItem::staticClassInfo),
    TYLHART_CLASS_ROW(CVariableItemList, "{B62E6D4E-DDDC-4AD3-A174-8B26AFBE08A8}", "{81C1557A-516A-406A-8D07-4AAECC28717C}", &CVariableItemList::staticClassInfo),
    TYLHART_CLASS_ROW(CCharArray, "{C9D4A58F-145C-48BC-86C2-70F89035F427}", "{E89BA353-53C6-4EFB-8F96-E8B5B987449C}", &CCharArray::staticClassInfo),
    TYLHART_CLASS_ROW(CObjectSet, "{F79D8524-43BC-4FE2-8A64-09D816ED433E}", "{6D3920E3-C1C3-4714-A1E8-A35360C0E7A1}", &CObjectSet::staticClassInfo),
    TYLHART_CLASS_ROW(CEnumeratorSet, "{706172D9-0B6A-45BA-8F84-C427AE096949}", "{E3492EA0-DDD4-4CD0-8D00-EE92B1DB910A}", &CEnumeratorSet::staticClassInfo),
    TYLHART_CLASS_ROW(CBitEnumeratorSet, "{3C793D6C-0DCE-4CE3-A5CF-F34717B6E640}", "{74849F67-F060-4EC8-B473-944AEEEB6BF4}", &CBitEnumeratorSet::staticClassInfo),
};
#undef TYLHART_CLASS_ROW

constexpr TypeLibraryInfo library{u"TylHartTypes", u"{016E9347-5C94-11D4-80BA-00E0291221F9}", 0x0409};

// "ActiveX component can't create object": the runtime error a scripting
// client gets from CreateObject for a class it cannot create.

int hexDigit(char16_t c) noexcept {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    return -1;
}

// Reads `count` hex digits at `pos` into `out`; false on any other character.
template <class T>
bool readHex(TextView s, std::size_t pos, std::size_t count, T& out) noexcept {
    std::uint64_t v = 0;
    for (std::size_t i = 0; i < count; ++i) {
        int d = hexDigit(s[pos + i]);
        if (d < 0) return false;
        v = (v << 4) | static_cast<std::uint64_t>(d);
    }
    out = static_cast<T>(v);
    return true;
}

const ClassEntry* findIf(auto&& match) noexcept {
    for (const ClassEntry& e : classTable)
        if (match(e)) return &e;
    return nullptr;
}

}  // namespace

std::optional<Guid> parseGuid(TextView s) noexcept {
    if (s.size() == 38) {
        if (s.front() != u'{' || s.back() != u'}') return std::nullopt;
        s = s.substr(1, 36);
    }
    if (s.size() != 36) return std::nullopt;
    if (s[8] != u'-' || s[13] != u'-' || s[18] != u'-' || s[23] != u'-') return std::nullopt;
    Guid g;
    if (!readHex(s, 0, 8, g.data1) || !readHex(s, 9, 4, g.data2) || !readHex(s, 14, 4, g.data3))
        return std::nullopt;
    for (std::size_t i = 0; i < 8; ++i) {
        std::size_t pos = i < 2 ? 19 + 2 * i : 24 + 2 * (i - 2);
        if (!readHex(s, pos, 2, g.data4[i])) return std::nullopt;
    }
    return g;
}

Text formatGuid(const Guid& g) {
    static constexpr char16_t digits[] = u"0123456789ABCDEF";
    Text out = u"{";
    auto put = [&](std::uint64_t v, int count) {
        for (int i = count - 1; i >= 0; --i) out.push_back(digits[(v >> (4 * i)) & 0xF]);
    };
    put(g.data1, 8);
    out += u'-';
    put(g.data2, 4);
    out += u'-';
    put(g.data3, 4);
    out += u'-';
    for (std::size_t i = 0; i < 8; ++i) {
        if (i == 2) out += u'-';
        put(g.data4[i], 2);
    }
    out += u'}';
    return out;
}

Ref<Object> ClassEntry::create() const {
    if (!classInfo) throw cannotCreateObject();
    return classInfo().create();
}

const TypeLibraryInfo& typeLibrary() noexcept { return library; }

std::span<const ClassEntry> classes() noexcept { return classTable; }

const ClassEntry* findClass(TextView className) noexcept {
    return findIf([&](const ClassEntry& e) { return equalsIgnoringCase(e.name, className); });
}

const ClassEntry* findClassByProgId(TextView progId) noexcept {
    return findIf([&](const ClassEntry& e) { return equalsIgnoringCase(e.progId, progId); });
}

const ClassEntry* findClassByClsid(const Guid& clsid) noexcept {
    return findIf([&](const ClassEntry& e) { return parseGuid(e.clsid) == clsid; });
}

const ClassEntry* findClassByClsid(TextView clsid) noexcept {
    std::optional<Guid> g = parseGuid(clsid);
    return g ? findClassByClsid(*g) : nullptr;
}

const ClassEntry* findClassByIid(const Guid& iid) noexcept {
    return findIf([&](const ClassEntry& e) { return parseGuid(e.iid) == iid; });
}

Error cannotCreateObject() { return errors::runtimeError(errors::Runtime::CannotCreateObject); }

Ref<Object> CreateObject(TextView progId) {
    const ClassEntry* e = findClassByProgId(progId);
    if (!e) throw cannotCreateObject();
    return e->create();
}

Ref<Object> CreateObjectFromClsid(TextView clsid) {
    const ClassEntry* e = findClassByClsid(clsid);
    if (!e) throw cannotCreateObject();
    return e->create();
}

}  // namespace tylhart::automation
