// SeguridadPermiso: whether the current user may perform an action on the class's
// records. A refusal is the action's name under the key of the class's permission
// group; the rights themselves are ClsSeguridadUsuario's business.
#include "frame/services/rights.hpp"
#include "platform/error.hpp"
#include "tools/tool_members.hpp"
#include "tools/tool_support.hpp"

namespace hist::tools {

std::string permissionKey(frame::RecordClass& cls) {
    const std::string_view group = cls.variants().permissionGroup;
    // A class without a group would ask about a key nobody refuses anything under,
    // and so allow everything: that is a mistake in the class, told as such.
    if (group.empty())
        raise(err::InvalidCall, std::string(cls.variants().className),
              std::string(cls.variants().className) + " names no permission group");
    auto security = services::ClsSeguridadUsuario::shared();
    // The service may move the security key; the group goes under what it answers,
    // so with the path unchanged the key holds "Seguridad" twice.
    return security->GetRutaSeguridad(applicationKey() + "Seguridad\\") + "Seguridad\\" + std::string(group) + "\\";
}

bool seguridadPermiso(frame::RecordClass& cls, std::string& sId) {
    std::string path = permissionKey(cls);
    bool allowed = true;
    if (services::ClsSeguridadUsuario::shared()->bRestringido(path, sId)) allowed = false;
    return allowed;
}

}  // namespace hist::tools
