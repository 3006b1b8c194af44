/* A C host: fetch the root structure, check it, call through the typed table. */
#include <TQColorSpace/TQColorSpace.h>
#include <stdio.h>

int main(void) {
  const TCS_APIStu *api = TCS_GetAPIStuPtr();
  if (!api) return 1;
  printf("check %d, HD Rv %d\n", TCS_CheckAPIStu(api), g_sR_V_HD[0]);
  if (TCS_CheckAPIStu(api) == TCS_CHECK_OK) {
    uint8_t src[6] = {10, 20, 30, 40, 50, 60}, dst[6] = {0};
    api->pRGB24->TCS_RGB24_SwapRB_Frame(dst, 6, src, 6, 2, 1, 0);
    if (dst[0] != 30 || dst[2] != 10) return 2;
  }
  return g_sR_V_HD[0] == 25800 ? 0 : 3;
}
