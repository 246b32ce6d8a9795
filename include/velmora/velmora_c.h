/* velmora_c.h: the control as a plain C library, for hosts in any language (C, Python's
 * ctypes, a plug-in loader) on Linux. It holds the four exports of an in-process server
 * (DllRegisterServer, DllUnregisterServer, DllGetClassObject, DllCanUnloadNow) and the
 * calls that drive one control: connect, Init, MAJ_Enr, read W_Total and W_Enr, destroy.
 *
 * Contract for every function:
 * - It returns a velmora_status and never lets an exception out. On failure the last
 *   failure of the calling thread says what went wrong: velmora_last_error_number() and
 *   velmora_last_error_message(). A success leaves them as they were.
 * - Text goes in and out as UTF-8, NUL-terminated. A NULL text argument of Init is "".
 * - Handles are opaque; each one made by a create call is given back exactly once
 *   (velmora_control_destroy, velmora_factory_release).
 * - Threads: like the control itself, all calls belong to one thread, the host's
 *   user-interface thread. Every control made here is on the process's default session:
 *   the connection and the files are shared by every control of the process, so
 *   velmora_control_set_database on one control connects them all, and destroying a
 *   control releases nothing that the others use.
 * - Ownership: the connection belongs to that session; it stays open until the process
 *   ends or another velmora_control_set_database replaces it.
 *
 * The functions are found by name (dlsym or the linker), never by position: adding one
 * never moves another, and the order of the declarations below carries no meaning for
 * the binary interface. */
#ifndef VELMORA_VELMORA_C_H
#define VELMORA_VELMORA_C_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define VELMORA_C_API __attribute__((visibility("default")))
#else
#define VELMORA_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Results. Zero and positive mean success; negative numbers are failures. */
typedef int32_t velmora_status;
#define VELMORA_OK 0
#define VELMORA_FALSE 1           /* success, and the answer is no (DllCanUnloadNow) */
#define VELMORA_E_INVALIDARG (-1) /* a NULL handle or output, an unknown scope */
#define VELMORA_E_NOCLASS (-2)    /* DllGetClassObject: no such class in this library */
#define VELMORA_E_REGISTRY (-3)   /* the class description cannot be written or removed */
#define VELMORA_E_CONTROL (-4)    /* the control failed: its number and message follow */
#define VELMORA_E_BUFFER (-5)     /* a text does not fit the buffer given */
#define VELMORA_E_UNEXPECTED (-6) /* out of memory or a fault of the library */

/* The class that this library serves. */
#define VELMORA_CLASS_NAME "Velmora.Ctr_VelmoraNew"

/* The last failure of the calling thread. The number is the control's own failure
 * number for VELMORA_E_CONTROL, as the C++ header <velmora/base/failure.h> names them:
 * 91 errors::kObjectNotSet (a call through an empty reference), 5 errors::kInvalidCall,
 * 13 errors::kTypeMismatch, -2147221493 errors::kRecordNotFound, -2147221489
 * errors::kDatabase (a database that cannot be used), -2147221487 errors::kBusy (another
 * program holds the store's lock)...; errno for VELMORA_E_REGISTRY; otherwise the status.
 * The message is in English for the host's log, valid until the next call on this
 * thread. */
VELMORA_C_API int32_t velmora_last_error_number(void);
VELMORA_C_API const char* velmora_last_error_message(void);

/* The library's version, "major.minor.patch" (the project's, e.g. "0.2.0"). */
VELMORA_C_API const char* velmora_version(void);

/* ---- The in-process server ---- */

/* Registration writes the description of the class, a small JSON object
 *   {"class": "Velmora.Ctr_VelmoraNew", "version": "0.2.0", "library": "/abs/libvelmora_c.so"}
 * ("version" is velmora_version())
 * as velmora/classes/Velmora.Ctr_VelmoraNew.json under a data directory: the user's
 * ($XDG_DATA_HOME, by default ~/.local/share) or the system's (the first directory of
 * $XDG_DATA_DIRS, by default /usr/local/share). A loader lists that folder, reads
 * "library" and opens it. The file is written aside and renamed into place.
 * Unregistration removes it; nothing registered is no failure. A file there that does
 * not describe this class is left alone (VELMORA_E_REGISTRY). */
typedef enum velmora_scope { VELMORA_SCOPE_USER = 0, VELMORA_SCOPE_SYSTEM = 1 } velmora_scope;
VELMORA_C_API velmora_status velmora_register_server(velmora_scope scope);
VELMORA_C_API velmora_status velmora_unregister_server(velmora_scope scope);
/* The user's registration. */
VELMORA_C_API velmora_status DllRegisterServer(void);
VELMORA_C_API velmora_status DllUnregisterServer(void);

/* A factory of controls. DllGetClassObject gives one for VELMORA_CLASS_NAME (or the bare
 * "Ctr_VelmoraNew"), VELMORA_E_NOCLASS for any other name. The caller releases it. */
typedef struct velmora_factory velmora_factory;
VELMORA_C_API velmora_status DllGetClassObject(const char* class_name, velmora_factory** factory);
VELMORA_C_API velmora_status velmora_factory_release(velmora_factory* factory);

/* VELMORA_OK when no control and no factory is alive, so the library may be unloaded;
 * VELMORA_FALSE otherwise. */
VELMORA_C_API velmora_status DllCanUnloadNow(void);

/* ---- One control ---- */

typedef struct velmora_control velmora_control;

/* A new control, not connected. The caller destroys it. */
VELMORA_C_API velmora_status velmora_factory_create_instance(velmora_factory* factory,
                                                             velmora_control** control);
VELMORA_C_API velmora_status velmora_control_destroy(velmora_control* control);

/* TheDatabase: a new read-only connection to the store in that file. Fails with the
 * control's number -2147221489 when the file is missing or holds no store. */
VELMORA_C_API velmora_status velmora_control_set_database(velmora_control* control,
                                                          const char* path);

/* Init with its seven arguments, the last five optional (NULL is ""). Init's changes to
 * its by-reference arguments stay inside: a C host keeps its own texts. */
VELMORA_C_API velmora_status velmora_control_init(velmora_control* control, const char* type_act,
                                                  const char* code, const char* date_deb,
                                                  const char* date_fin, const char* heure_de,
                                                  const char* heure_a, const char* jour);

/* MAJ_Enr: builds W_Enr from the selection. */
VELMORA_C_API velmora_status velmora_control_maj_enr(velmora_control* control);

/* W_Total, the total of the selection in minutes, as the platform's Currency: the value
 * times 10000 (70 minutes is 700000). */
VELMORA_C_API velmora_status velmora_control_w_total(const velmora_control* control,
                                                     int64_t* ten_thousandths);

/* W_Enr: the number of items (attributes), then value 1 (code), 2 (duration in minutes)
 * or 3 (observation) of item `item` counted from 1, "" where absent. The text is copied
 * with its NUL into buffer when it fits; *needed (if not NULL) gets its size with the
 * NUL, so a call with size 0 asks for it (and answers VELMORA_E_BUFFER). W_Enr empty
 * (before MAJ_Enr) is the control's failure 91. */
VELMORA_C_API velmora_status velmora_control_w_enr_count(const velmora_control* control,
                                                         int32_t* items);
VELMORA_C_API velmora_status velmora_control_w_enr_value(const velmora_control* control,
                                                         int32_t item, int32_t value, char* buffer,
                                                         size_t size, size_t* needed);

#ifdef __cplusplus
}
#endif

#endif /* VELMORA_VELMORA_C_H */
