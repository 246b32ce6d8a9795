/* A C host drives the control through libvelmora_c: registration in a temporary data
 * directory, the factory and the unload answer, failures as codes, then Init and MAJ_Enr
 * on the sample account. Usage: test_capi SAMPLE_DB */
#include <velmora/velmora_c.h>

#include <dirent.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <unistd.h>

static int failures = 0;

#define CHECK(condition)                                                                          \
  do {                                                                                            \
    if (!(condition)) {                                                                           \
      fprintf(stderr, "%s:%d: %s failed (last failure %d: %s)\n", __FILE__, __LINE__, #condition, \
              velmora_last_error_number(), velmora_last_error_message());                         \
      ++failures;                                                                                 \
    }                                                                                             \
  } while (0)

/* The file's first 4 kB, as a string; "" when there is no such file. */
static const char* readAll(const char* path) {
  static char text[4096];
  FILE* f = fopen(path, "rb");
  size_t n = f != NULL ? fread(text, 1, sizeof text - 1, f) : 0;
  if (f != NULL) fclose(f);
  text[n] = '\0';
  return text;
}

/* How many names the folder holds, besides "." and "..". */
static int entries(const char* folder) {
  DIR* dir = opendir(folder);
  int n = 0;
  for (const struct dirent* e = dir != NULL ? readdir(dir) : NULL; e != NULL; e = readdir(dir)) {
    if (strcmp(e->d_name, ".") != 0 && strcmp(e->d_name, "..") != 0) ++n;
  }
  if (dir != NULL) closedir(dir);
  return n;
}

/* DllRegisterServer describes the class under $XDG_DATA_HOME; unregistering removes it. */
static void registration(void) {
  char home[] = "/tmp/velmora-capi-XXXXXX";
  CHECK(mkdtemp(home) != NULL);
  setenv("XDG_DATA_HOME", home, 1);
  char file[512];
  snprintf(file, sizeof file, "%s/velmora/classes/" VELMORA_CLASS_NAME ".json", home);

  CHECK(DllRegisterServer() == VELMORA_OK);
  CHECK(strstr(readAll(file), "\"class\": \"" VELMORA_CLASS_NAME "\"") != NULL);
  CHECK(strstr(readAll(file), "/libvelmora_c.so") != NULL);
  CHECK(DllUnregisterServer() == VELMORA_OK);
  CHECK(access(file, F_OK) != 0);
  CHECK(DllUnregisterServer() == VELMORA_OK); /* nothing registered is no failure */

  /* A write cut short (by a file size limit here) fails and leaves the registration as it
   * was: the earlier file whole, and no temporary beside it. */
  CHECK(DllRegisterServer() == VELMORA_OK);
  char before[4096];
  snprintf(before, sizeof before, "%s", readAll(file));
  struct rlimit saved;
  CHECK(getrlimit(RLIMIT_FSIZE, &saved) == 0);
  struct rlimit tiny = saved;
  tiny.rlim_cur = 16;
  signal(SIGXFSZ, SIG_IGN);
  CHECK(setrlimit(RLIMIT_FSIZE, &tiny) == 0);
  CHECK(DllRegisterServer() == VELMORA_E_REGISTRY);
  CHECK(setrlimit(RLIMIT_FSIZE, &saved) == 0);
  CHECK(strlen(before) > 16 && strcmp(readAll(file), before) == 0);
  char folder[512];
  snprintf(folder, sizeof folder, "%s/velmora/classes", home);
  CHECK(entries(folder) == 1);
  CHECK(DllUnregisterServer() == VELMORA_OK);

  /* A file of the same name that is not ours stays where it is. */
  FILE* foreign = fopen(file, "wb");
  CHECK(foreign != NULL && fputs("{\"class\": \"Other\"}\n", foreign) >= 0 && fclose(foreign) == 0);
  CHECK(DllUnregisterServer() == VELMORA_E_REGISTRY);
  CHECK(strstr(readAll(file), "Other") != NULL);
  remove(file);
  snprintf(file, sizeof file, "%s/velmora/classes", home);
  rmdir(file);
  snprintf(file, sizeof file, "%s/velmora", home);
  rmdir(file);
  rmdir(home);
}

static void sampleAccount(const char* database) {
  velmora_factory* factory = NULL;
  CHECK(DllGetClassObject("Ctr_Autre", &factory) == VELMORA_E_NOCLASS);
  CHECK(factory == NULL);
  CHECK(DllCanUnloadNow() == VELMORA_OK);
  CHECK(DllGetClassObject(VELMORA_CLASS_NAME, &factory) == VELMORA_OK);
  CHECK(DllCanUnloadNow() == VELMORA_FALSE);

  velmora_control* control = NULL;
  CHECK(velmora_factory_create_instance(factory, &control) == VELMORA_OK);
  CHECK(velmora_factory_release(factory) == VELMORA_OK);
  CHECK(DllCanUnloadNow() == VELMORA_FALSE); /* the control is still alive */
  if (control == NULL) return;

  /* Failures come back as codes with the control's number. */
  int32_t items = -1;
  CHECK(velmora_control_w_enr_count(control, &items) == VELMORA_E_CONTROL);
  CHECK(velmora_last_error_number() == 91);
  CHECK(velmora_control_set_database(control, "/nonexistent/velmora.db") == VELMORA_E_CONTROL);
  CHECK(velmora_last_error_number() == -2147221489);
  CHECK(strstr(velmora_last_error_message(), "/nonexistent/velmora.db") != NULL);
  CHECK(velmora_control_init(NULL, "AUTRE", "00001", NULL, NULL, NULL, NULL, NULL) ==
        VELMORA_E_INVALIDARG);

  /* Mme Lefèvre, Monday 23/11/2026 08:30-10:00: the Monday template's four items. */
  CHECK(velmora_control_set_database(control, database) == VELMORA_OK);
  CHECK(velmora_control_init(control, "AUTRE", "00001", "23/11/2026", "", "08:30", "10:00",
                             "1000000") == VELMORA_OK);
  int64_t total = -1;
  CHECK(velmora_control_w_total(control, &total) == VELMORA_OK);
  CHECK(total == 70 * 10000);

  CHECK(velmora_control_maj_enr(control) == VELMORA_OK);
  CHECK(velmora_control_w_enr_count(control, &items) == VELMORA_OK);
  CHECK(items == 4);
  char text[128];
  size_t needed = 0;
  CHECK(velmora_control_w_enr_value(control, 2, 1, text, sizeof text, &needed) == VELMORA_OK);
  CHECK(strcmp(text, "Aide \xc3\xa0 la toilette") == 0);
  CHECK(needed == strlen(text) + 1);
  CHECK(velmora_control_w_enr_value(control, 2, 3, text, sizeof text, NULL) == VELMORA_OK);
  CHECK(strncmp(text, "Savon doux uniquement", 21) == 0);
  CHECK(velmora_control_w_enr_value(control, 2, 3, text, 4, &needed) == VELMORA_E_BUFFER);
  CHECK(needed > 21);
  CHECK(velmora_control_w_enr_value(control, 9, 1, text, sizeof text, NULL) == VELMORA_OK);
  CHECK(strcmp(text, "") == 0);

  CHECK(velmora_control_destroy(control) == VELMORA_OK);
  CHECK(DllCanUnloadNow() == VELMORA_OK);
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s SAMPLE_DB\n", argv[0]);
    return 2;
  }
  registration();
  sampleAccount(argv[1]);
  if (failures != 0) fprintf(stderr, "%d check(s) failed\n", failures);
  return failures == 0 ? 0 : 1;
}
