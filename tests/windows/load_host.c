/* A C host of the DLLs, as a Windows video program uses them: nothing of
 * ours is linked; TQColorSpace.dll is loaded with LoadLibrary, its entry
 * points found with GetProcAddress, a frame converted, the library released,
 * and the records of its entry point watched through TQCPUBase's log sink.
 *
 *   tqcs_load_host convert  load, check, convert, run a thread, free: the load
 *                           and unload records (and none from the thread), the
 *                           exported root pointer, a known frame
 *   tqcs_load_host refuse   a stand-in TQCPUBase.dll (../standin) whose
 *                           null-pointer test fails start-up: LoadLibrary must
 *                           return null after the failure record */
#include <TQCPUBase.h>
#include <TQColorSpace/TQColorSpace.h>
#include <stdio.h>
#include <string.h>
#include <windows.h>

typedef struct {
  int32_t level;
  char file[32], function[32], message[64];
} Record;
static Record g_records[32];
static int g_recordCount;

static void Narrow(char *out, size_t size, const char16_t *s) {
  size_t i = 0;
  for (; s && s[i] && i + 1 < size; ++i) out[i] = (char)s[i];
  out[i] = 0;
}

static void Sink(void *context, int32_t level, const char16_t *file, const char16_t *function,
                 const char16_t *format, const char16_t *message) {
  (void)context;
  (void)format;
  if (g_recordCount == 32) return;
  Record *r = &g_records[g_recordCount++];
  r->level = level;
  Narrow(r->file, sizeof r->file, file);
  Narrow(r->function, sizeof r->function, function);
  Narrow(r->message, sizeof r->message, message);
}

/* Whether the entry point wrote `message` at `level`. */
static int EntryLogged(int32_t level, const char *message) {
  for (int i = 0; i < g_recordCount; ++i)
    if (g_records[i].level == level && !strcmp(g_records[i].file, "TQColorSpace") &&
        !strcmp(g_records[i].function, "DllMain()") && !strcmp(g_records[i].message, message))
      return 1;
  return 0;
}

#define CHECK(cond, what)                       \
  do {                                          \
    if (!(cond)) {                              \
      fprintf(stderr, "load host: %s\n", what); \
      return 1;                                 \
    }                                           \
  } while (0)

/* Loads `name` from the folder `folder` beside this program's own folder
 * (null: this program's folder). */
static HMODULE LoadBeside(const char *folder, const char *name) {
  char path[MAX_PATH];
  const DWORD n = GetModuleFileNameA(NULL, path, MAX_PATH);
  if (n == 0 || n >= MAX_PATH) return NULL;
  *strrchr(path, '\\') = 0;
  char full[MAX_PATH + 64];
  if (folder)
    snprintf(full, sizeof full, "%s\\..\\%s\\%s", path, folder, name);
  else
    snprintf(full, sizeof full, "%s\\%s", path, name);
  return LoadLibraryA(full);
}

/* TQCPUBase first (the real one or the stand-in), so that the records of
 * TQColorSpace's start-up reach the sink. */
static int WatchLog(const char *folder) {
  HMODULE base = LoadBeside(folder, "TQCPUBase.dll");
  CHECK(base, "TQCPUBase.dll does not load");
  void (*setSink)(TCB_LogSink, void *) =
      (void (*)(TCB_LogSink, void *))(void *)GetProcAddress(base, "TCB_SetLogSink");
  CHECK(setSink, "TQCPUBase.dll has no TCB_SetLogSink");
  setSink(Sink, NULL);
  return 0;
}

/* An 8 x 2 RGB24 frame (B, G, R) to packed YUYV, HD matrix: black, white,
 * the primaries, mid grey and two mixed colours, the second row mirrored.
 * The expected bytes are the portable routines' results. */
static const uint8_t kPixels[8][3] = {{0, 0, 0},   {255, 255, 255}, {0, 0, 255},   {0, 255, 0},
                                      {255, 0, 0}, {128, 128, 128}, {30, 200, 10}, {128, 5, 250}};
static const uint8_t kYUYV[2][16] = {
    {0, 128, 255, 128, 18, 255, 182, 116, 54, 99, 128, 255, 150, 52, 49, 52},
    {49, 236, 150, 178, 128, 128, 54, 128, 182, 30, 18, 12, 255, 128, 0, 128}};

static DWORD WINAPI Idle(LPVOID unused) {
  (void)unused;
  return 0;
}

static int Convert(void) {
  if (WatchLog(NULL)) return 1;
  HMODULE lib = LoadLibraryA("TQColorSpace.dll");
  CHECK(lib, "TQColorSpace.dll does not load");
  CHECK(EntryLogged(0, "DLL Loading Succeed"), "no \"DLL Loading Succeed\" record");

  TCS_APIStu *(*getRoot)(void) =
      (TCS_APIStu * (*)(void))(void *)GetProcAddress(lib, "TCS_GetAPIStuPtr");
  int32_t (*check)(const TCS_APIStu *) =
      (int32_t(*)(const TCS_APIStu *))(void *)GetProcAddress(lib, "TCS_CheckAPIStu");
  TCS_APIStu **root = (TCS_APIStu **)(void *)GetProcAddress(lib, "g_pColorSpaceAPI");
  CHECK(getRoot && check && root, "an entry point is not exported");
  TCS_APIStu *api = getRoot();
  CHECK(api && *root == api, "g_pColorSpaceAPI is not the root TCS_GetAPIStuPtr returns");
  CHECK(check(api) == TCS_CHECK_OK, "TCS_CheckAPIStu does not accept the root");

  uint8_t src[2][24], dst[2][16 + 4];
  for (int x = 0; x < 8; ++x)
    for (int c = 0; c < 3; ++c) src[0][3 * x + c] = src[1][3 * (7 - x) + c] = kPixels[x][c];
  for (uint8_t flip = 0; flip < 2; ++flip) {
    memset(dst, 0xA5, sizeof dst);
    api->pRGB24->TCS_RGB24_2_YUV16_Frame(&dst[0][0], sizeof dst[0], &src[0][0], sizeof src[0], 8, 2,
                                         TCS_MATRIX_HD, 0, 0, flip);
    for (int y = 0; y < 2; ++y) {
      CHECK(!memcmp(dst[y], kYUYV[flip ? 1 - y : y], 16), "the converted frame differs");
      CHECK(dst[y][16] == 0xA5 && dst[y][19] == 0xA5, "a byte past a row was written");
    }
  }

  /* A thread's start and end reach DllMain as thread attach and detach,
   * which do nothing. */
  const int recordsBefore = g_recordCount;
  HANDLE thread = CreateThread(NULL, 0, Idle, NULL, 0, NULL);
  CHECK(thread && WaitForSingleObject(thread, INFINITE) == WAIT_OBJECT_0, "a thread did not run");
  CloseHandle(thread);
  CHECK(g_recordCount == recordsBefore, "thread attach or detach wrote a record");

  CHECK(FreeLibrary(lib), "FreeLibrary failed");
  CHECK(EntryLogged(0, "DLL Unloading Succeed"), "no \"DLL Unloading Succeed\" record");
  printf("load host: loaded, converted an 8 x 2 frame both ways up, ran a thread, unloaded\n");
  return 0;
}

static int Refuse(void) {
  if (WatchLog("standin")) return 1;
  SetErrorMode(SEM_FAILCRITICALERRORS);
  HMODULE lib = LoadBeside("bin", "TQColorSpace.dll");
  CHECK(!lib, "the load was not refused");
  CHECK(EntryLogged(3, "DLL Loading Failed"), "no \"DLL Loading Failed\" record at level 3");
  CHECK(!EntryLogged(0, "DLL Loading Succeed"), "a success record after the failure");
  printf("load host: start-up failed, load refused (error %lu), failure recorded\n",
         (unsigned long)GetLastError());
  return 0;
}

int main(int argc, char **argv) {
  if (argc == 2 && !strcmp(argv[1], "convert")) return Convert();
  if (argc == 2 && !strcmp(argv[1], "refuse")) return Refuse();
  fprintf(stderr, "usage: tqcs_load_host convert|refuse\n");
  return 2;
}
