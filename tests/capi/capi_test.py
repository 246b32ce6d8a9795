"""A Python host drives the control through libvelmora_c with ctypes: Init and MAJ_Enr on
the sample account, then W_Total and W_Enr. Usage: capi_test.py LIBRARY SAMPLE_DB"""
import ctypes
import sys

OK, E_CONTROL = 0, -4


def main(library_path, database):
    lib = ctypes.CDLL(library_path)
    lib.velmora_last_error_message.restype = ctypes.c_char_p
    handle = ctypes.c_void_p

    def check(status, expected=OK):
        if status != expected:
            raise SystemExit("status %d, expected %d (last failure %d: %s)" % (
                status, expected, lib.velmora_last_error_number(),
                lib.velmora_last_error_message().decode()))

    factory, control = handle(), handle()
    check(lib.DllGetClassObject(b"Velmora.Ctr_VelmoraNew", ctypes.byref(factory)))
    check(lib.velmora_factory_create_instance(factory, ctypes.byref(control)))
    check(lib.velmora_factory_release(factory))

    check(lib.velmora_control_set_database(control, database.encode()))
    args = ["AUTRE", "00001", "23/11/2026", "", "08:30", "10:00", "1000000"]
    check(lib.velmora_control_init(control, *[a.encode() for a in args]))
    total = ctypes.c_int64()
    check(lib.velmora_control_w_total(control, ctypes.byref(total)))
    if total.value != 70 * 10000:
        raise SystemExit("W_Total %d, expected 700000 (70 minutes)" % total.value)

    check(lib.velmora_control_maj_enr(control))
    items = ctypes.c_int32()
    check(lib.velmora_control_w_enr_count(control, ctypes.byref(items)))
    codes = []
    for item in range(1, items.value + 1):
        buffer = ctypes.create_string_buffer(256)
        check(lib.velmora_control_w_enr_value(control, item, 1, buffer, 256, None))
        codes.append(buffer.value.decode())
    expected = ["Aide au lever", "Aide à la toilette", "Préparation du petit-déjeuner",
                "Réfection du lit"]
    if codes != expected:
        raise SystemExit("W_Enr codes %r, expected %r" % (codes, expected))

    check(lib.velmora_control_destroy(control))
    check(lib.DllCanUnloadNow())


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2])
