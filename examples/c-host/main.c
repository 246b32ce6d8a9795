/* velmora-c-host: the control from C, as a host in another language would use it: the
 * class's factory, one control on a store, Init for client 00001 on Monday 23/11/2026
 * 08:30-10:00, then the total and the items selected. Exits with 1 on a failure of the
 * control (its number and message on standard error), 2 on a wrong command line.
 *   usage: velmora-c-host STORE */
#include <velmora/velmora_c.h>

#include <inttypes.h>
#include <stdio.h>

static int failed(const char* what) {
  fprintf(stderr, "velmora-c-host: %s: %" PRId32 " %s\n", what, velmora_last_error_number(),
          velmora_last_error_message());
  return 1;
}

static int run(velmora_control* control, const char* store) {
  if (velmora_control_set_database(control, store) != VELMORA_OK) return failed("store");
  if (velmora_control_init(control, "AUTRE", "00001", "23/11/2026", "", "08:30", "10:00",
                           "1000000") != VELMORA_OK) {
    return failed("Init");
  }
  int64_t total = 0;
  int32_t items = 0;
  if (velmora_control_maj_enr(control) != VELMORA_OK ||
      velmora_control_w_total(control, &total) != VELMORA_OK ||
      velmora_control_w_enr_count(control, &items) != VELMORA_OK) {
    return failed("MAJ_Enr");
  }
  printf("velmora %s: %" PRId32 " items, %" PRId64 " minutes\n", velmora_version(), items,
         total / 10000);
  for (int32_t item = 1; item <= items; ++item) {
    char code[256];
    if (velmora_control_w_enr_value(control, item, 1, code, sizeof code, NULL) != VELMORA_OK) {
      return failed("W_Enr");
    }
    printf("  %s\n", code);
  }
  return items > 0 ? 0 : 1;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: velmora-c-host STORE\n");
    return 2;
  }
  velmora_factory* factory = NULL;
  velmora_control* control = NULL;
  if (DllGetClassObject(VELMORA_CLASS_NAME, &factory) != VELMORA_OK ||
      velmora_factory_create_instance(factory, &control) != VELMORA_OK) {
    return failed("the control's class");
  }
  velmora_factory_release(factory);
  const int status = run(control, argv[1]);
  velmora_control_destroy(control);
  return status;
}
