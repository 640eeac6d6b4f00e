#include "tylhart/automation/Entry.hpp"

#include <new>

namespace tylhart::automation {

Ref<Object> ClassFactory::CreateInstance() const { return entry_->create(); }

const ClassInfo& ClassFactory::staticClassInfo() {
    // A factory only exists for a class, so it has no factory of its own.
    static const ClassInfo info =
        ClassBuilder<ClassFactory>(TypeName).method(u"CreateInstance", &ClassFactory::CreateInstance).build(nullptr);
    return info;
}

}  // namespace tylhart::automation

using tylhart::automation::ClassEntry;
using tylhart::automation::Guid;
using tylhart::automation::HResult;
namespace status = tylhart::automation::status;

extern "C" {

HResult TYLHART_ENTRY_CALL DllGetClassObject(const Guid& rclsid, const Guid& riid, void** ppv) {
    using namespace tylhart::automation;
    if (!ppv) return status::Pointer;
    *ppv = nullptr;
    const ClassEntry* entry = findClassByClsid(rclsid);
    // A class whose implementation is missing cannot serve a factory either.
    if (!entry || !entry->built()) return status::ClassNotAvailable;
    if (riid != IidUnknown && riid != IidClassFactory && parseGuid(entry->iid) != riid)
        return status::NoInterface;
    // Nothing may leave a C entry point as an exception.
    try {
        tylhart::Object* factory = tylhart::make<ClassFactory>(*entry).detach();
        *ppv = factory;
        return status::Ok;
    } catch (const std::bad_alloc&) {
        return status::OutOfMemory;
    } catch (...) {
        return status::Unexpected;
    }
}

HResult TYLHART_ENTRY_CALL DllCanUnloadNow() {
    return tylhart::Object::liveObjects() == 0 ? status::Ok : status::False;
}

// Registration is static here: platforms without a component registry have
// nothing to write, because the class table compiled into the library is
// what CreateObject and DllGetClassObject consult. Installers that call
// these entry points still see success. A Windows build replaces the two
// bodies with ones that write and remove the registry keys.
HResult TYLHART_ENTRY_CALL DllRegisterServer() { return status::Ok; }

HResult TYLHART_ENTRY_CALL DllUnregisterServer() { return status::Ok; }

}  // extern "C"
