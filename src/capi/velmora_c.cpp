// The C boundary of the control: each exported function runs its body through
// atBoundary(), which turns every exception into a status code and the calling thread's
// last failure, so that nothing unwinds into a C or Python host.
#include "velmora/velmora_c.h"

#include <dlfcn.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <new>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/store/sqlite_database.h>
#include <velmora/version.h>

struct velmora_factory {};

struct velmora_control {
  velmora::Ctr_VelmoraNew control;
};

namespace {

namespace fs = std::filesystem;

constexpr const char* kClassFileName = VELMORA_CLASS_NAME ".json";

std::atomic<int> liveControls{0};
std::atomic<int> liveFactories{0};

struct LastError {
  std::int32_t number = 0;
  std::string message;
};
thread_local LastError lastError;

// A registration file that cannot be written or removed; number is errno.
struct RegistryError {
  int number;
  std::string message;
};

velmora_status fail(velmora_status status, long number, std::string message) noexcept {
  try {
    lastError.number = static_cast<std::int32_t>(number);
    lastError.message = std::move(message);
  } catch (...) {
    lastError.message.clear();
  }
  return status;
}

template <class Body>
velmora_status atBoundary(Body&& body) noexcept {
  try {
    return body();
  } catch (const velmora::Failure& failure) {
    return fail(VELMORA_E_CONTROL, failure.number(), failure.what());
  } catch (const RegistryError& error) {
    return fail(VELMORA_E_REGISTRY, error.number, error.message);
  } catch (const fs::filesystem_error& error) {
    return fail(VELMORA_E_REGISTRY, error.code().value(), error.what());
  } catch (const std::bad_alloc&) {
    return fail(VELMORA_E_UNEXPECTED, VELMORA_E_UNEXPECTED, "out of memory");
  } catch (const std::exception& other) {
    return fail(VELMORA_E_UNEXPECTED, VELMORA_E_UNEXPECTED, other.what());
  } catch (...) {
    return fail(VELMORA_E_UNEXPECTED, VELMORA_E_UNEXPECTED, "unknown fault");
  }
}

velmora_status invalidArgument(const char* what) {
  return fail(VELMORA_E_INVALIDARG, VELMORA_E_INVALIDARG, std::string(what) + " is NULL");
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

// The data directory of a scope, as the XDG base directory rules give it: a relative
// path in a variable is ignored.
fs::path dataDirectory(velmora_scope scope) {
  if (scope == VELMORA_SCOPE_USER) {
    if (fs::path home = environment("XDG_DATA_HOME"); home.is_absolute()) return home;
    const fs::path user = environment("HOME");
    if (!user.is_absolute()) throw RegistryError{ENOENT, "neither XDG_DATA_HOME nor HOME is set"};
    return user / ".local" / "share";
  }
  const std::string dirs = environment("XDG_DATA_DIRS");
  if (fs::path first = dirs.substr(0, dirs.find(':')); first.is_absolute()) return first;
  return "/usr/local/share";
}

fs::path classFile(velmora_scope scope) {
  return dataDirectory(scope) / "velmora" / "classes" / kClassFileName;
}

// The absolute path of this shared library, as the dynamic loader opened it.
std::string libraryPath() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&DllGetClassObject), &info) == 0 ||
      info.dli_fname == nullptr) {
    throw RegistryError{ENOENT, "the library cannot find its own path"};
  }
  return fs::canonical(info.dli_fname).string();
}

std::string classDescription() {
  const nlohmann::json description = {
      {"class", VELMORA_CLASS_NAME}, {"version", VELMORA_VERSION}, {"library", libraryPath()}};
  return description.dump(2) + "\n";
}

bool describesThisClass(const fs::path& file) {
  std::ifstream in(file);
  const auto parsed = nlohmann::json::parse(in, nullptr, false);
  return parsed.is_object() && parsed.value("class", "") == VELMORA_CLASS_NAME;
}

// Writes beside the target under a name of its own, then renames over it.
void writeAtomically(const fs::path& target, const std::string& text) {
  fs::create_directories(target.parent_path());
  // Built by appends: GCC 12 warns falsely (-Wrestrict) on "." + string.
  std::string asideName(1, '.');
  asideName.append(target.filename().string()).append(".").append(std::to_string(::getpid()));
  asideName.append(".tmp");
  const fs::path aside = target.parent_path() / asideName;
  {
    std::ofstream out(aside, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out) {
      const int error = errno;
      std::error_code ignored;
      fs::remove(aside, ignored);
      throw RegistryError{error, "cannot write " + aside.string() + ": " + std::strerror(error)};
    }
  }
  std::error_code renamed;
  fs::rename(aside, target, renamed);
  if (renamed) {
    std::error_code ignored;
    fs::remove(aside, ignored);
    throw RegistryError{renamed.value(),
                        "cannot rename into " + target.string() + ": " + renamed.message()};
  }
}

bool knownScope(velmora_scope scope) {
  return scope == VELMORA_SCOPE_USER || scope == VELMORA_SCOPE_SYSTEM;
}

velmora::Text textOf(const char* utf8) {
  return utf8 == nullptr ? velmora::Text() : velmora::fromUtf8(utf8);
}

}  // namespace

extern "C" {

std::int32_t velmora_last_error_number(void) {
  return lastError.number;
}

const char* velmora_last_error_message(void) {
  return lastError.message.c_str();
}

const char* velmora_version(void) {
  return VELMORA_VERSION;
}

velmora_status velmora_register_server(velmora_scope scope) {
  return atBoundary([&] {
    if (!knownScope(scope)) return invalidArgument("scope");
    writeAtomically(classFile(scope), classDescription());
    return VELMORA_OK;
  });
}

velmora_status velmora_unregister_server(velmora_scope scope) {
  return atBoundary([&] {
    if (!knownScope(scope)) return invalidArgument("scope");
    const fs::path file = classFile(scope);
    if (!fs::exists(file)) return VELMORA_OK;
    if (!describesThisClass(file)) {
      throw RegistryError{
          EEXIST, file.string() + " does not describe " VELMORA_CLASS_NAME "; left as it is"};
    }
    fs::remove(file);
    return VELMORA_OK;
  });
}

velmora_status DllRegisterServer(void) {
  return velmora_register_server(VELMORA_SCOPE_USER);
}

velmora_status DllUnregisterServer(void) {
  return velmora_unregister_server(VELMORA_SCOPE_USER);
}

velmora_status DllGetClassObject(const char* class_name, velmora_factory** factory) {
  return atBoundary([&] {
    if (class_name == nullptr) return invalidArgument("class_name");
    if (factory == nullptr) return invalidArgument("factory");
    *factory = nullptr;
    const std::string name = class_name;
    if (name != VELMORA_CLASS_NAME && name != "Ctr_VelmoraNew") {
      return fail(VELMORA_E_NOCLASS, VELMORA_E_NOCLASS,
                  "no class " + name + " in this library; it serves " VELMORA_CLASS_NAME);
    }
    *factory = std::make_unique<velmora_factory>().release();
    ++liveFactories;
    return VELMORA_OK;
  });
}

velmora_status velmora_factory_release(velmora_factory* factory) {
  if (factory == nullptr) return invalidArgument("factory");
  std::unique_ptr<velmora_factory> released(factory);
  --liveFactories;
  return VELMORA_OK;
}

velmora_status DllCanUnloadNow(void) {
  return liveControls == 0 && liveFactories == 0 ? VELMORA_OK : VELMORA_FALSE;
}

velmora_status velmora_factory_create_instance(velmora_factory* factory,
                                               velmora_control** control) {
  return atBoundary([&] {
    if (factory == nullptr) return invalidArgument("factory");
    if (control == nullptr) return invalidArgument("control");
    *control = std::make_unique<velmora_control>().release();
    ++liveControls;
    return VELMORA_OK;
  });
}

velmora_status velmora_control_destroy(velmora_control* control) {
  return atBoundary([&] {
    if (control == nullptr) return invalidArgument("control");
    std::unique_ptr<velmora_control> destroyed(control);
    destroyed.reset();
    --liveControls;
    return VELMORA_OK;
  });
}

velmora_status velmora_control_set_database(velmora_control* control, const char* path) {
  return atBoundary([&] {
    if (control == nullptr) return invalidArgument("control");
    if (path == nullptr) return invalidArgument("path");
    control->control.TheDatabase(velmora::openDatabase(path));
    return VELMORA_OK;
  });
}

velmora_status velmora_control_init(velmora_control* control, const char* type_act,
                                    const char* code, const char* date_deb, const char* date_fin,
                                    const char* heure_de, const char* heure_a, const char* jour) {
  return atBoundary([&] {
    if (control == nullptr) return invalidArgument("control");
    velmora::InitArguments a{textOf(type_act), textOf(code),    textOf(date_deb), textOf(date_fin),
                             textOf(heure_de), textOf(heure_a), textOf(jour)};
    control->control.Init(a);
    return VELMORA_OK;
  });
}

velmora_status velmora_control_maj_enr(velmora_control* control) {
  return atBoundary([&] {
    if (control == nullptr) return invalidArgument("control");
    control->control.MAJ_Enr();
    return VELMORA_OK;
  });
}

velmora_status velmora_control_w_total(const velmora_control* control, int64_t* ten_thousandths) {
  if (control == nullptr) return invalidArgument("control");
  if (ten_thousandths == nullptr) return invalidArgument("ten_thousandths");
  *ten_thousandths = control->control.W_Total.units();
  return VELMORA_OK;
}

velmora_status velmora_control_w_enr_count(const velmora_control* control, int32_t* items) {
  return atBoundary([&] {
    if (control == nullptr) return invalidArgument("control");
    if (items == nullptr) return invalidArgument("items");
    *items = control->control.W_Enr->DCount();
    return VELMORA_OK;
  });
}

velmora_status velmora_control_w_enr_value(const velmora_control* control, int32_t item,
                                           int32_t value, char* buffer, size_t size,
                                           size_t* needed) {
  return atBoundary([&] {
    if (control == nullptr) return invalidArgument("control");
    if (buffer == nullptr && size > 0) return invalidArgument("buffer");
    const std::string text = velmora::toUtf8(control->control.W_Enr->r(item, value));
    if (needed != nullptr) *needed = text.size() + 1;
    if (text.size() + 1 > size) {
      return fail(VELMORA_E_BUFFER, VELMORA_E_BUFFER,
                  "the value needs " + std::to_string(text.size() + 1) + " bytes");
    }
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return VELMORA_OK;
  });
}

}  // extern "C"
