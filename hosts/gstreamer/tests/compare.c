/* Compares two raw frame files of one format: bit for bit ("exact"), or by
 * the PSNR of their luma (RGB: luma weighted as BT.709) against a floor. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef struct {
  const char *name;
  int bytes_per_pixel, luma_offset; /* packed: where Y sits; 0 bytes: planar, Y first */
  int red, green, blue;             /* RGB: byte of each channel; -1 for YUV */
} Format;

static const Format kFormats[] = {
    {"BGRA", 4, 0, 2, 1, 0},  {"RGBA", 4, 0, 0, 1, 2},  {"BGR", 3, 0, 2, 1, 0},
    {"RGB", 3, 0, 0, 1, 2},   {"YUY2", 2, 0, -1, 0, 0}, {"UYVY", 2, 1, -1, 0, 0},
    {"v308", 3, 0, -1, 0, 0}, {"Y42B", 1, 0, -1, 0, 0}, {"I420", 1, 0, -1, 0, 0},
    {"NV12", 1, 0, -1, 0, 0}, {"NV16", 1, 0, -1, 0, 0}, {"GRAY8", 1, 0, -1, 0, 0}};

static unsigned char *load(const char *path, long *size) {
  FILE *f = fopen(path, "rb");
  if (!f) return NULL;
  fseek(f, 0, SEEK_END);
  *size = ftell(f);
  fseek(f, 0, SEEK_SET);
  unsigned char *data = malloc(*size ? *size : 1);
  if (fread(data, 1, *size, f) != (size_t)*size) *size = -1;
  fclose(f);
  return data;
}

static double luma(const Format *f, const unsigned char *p) {
  if (f->red < 0) return p[f->luma_offset];
  return 0.2126 * p[f->red] + 0.7152 * p[f->green] + 0.0722 * p[f->blue];
}

int main(int argc, char **argv) {
  if (argc != 7) {
    fprintf(stderr, "usage: %s FORMAT WIDTH HEIGHT A B exact|MIN_DB\n", argv[0]);
    return 2;
  }
  const Format *f = NULL;
  for (size_t i = 0; i < sizeof kFormats / sizeof kFormats[0]; ++i)
    if (strcmp(kFormats[i].name, argv[1]) == 0) f = &kFormats[i];
  const long width = atol(argv[2]), height = atol(argv[3]);
  long size_a, size_b;
  unsigned char *a = load(argv[4], &size_a), *b = load(argv[5], &size_b);
  if (!f || !a || !b || size_a != size_b || size_a < width * height * f->bytes_per_pixel) {
    fprintf(stderr, "%s: unknown format, unreadable files or sizes %ld and %ld differ\n", argv[1],
            size_a, size_b);
    return 2;
  }
  if (strcmp(argv[6], "exact") == 0) {
    const int same = memcmp(a, b, size_a) == 0;
    printf("%s: %s\n", argv[1], same ? "identical" : "differ");
    return same ? 0 : 1;
  }
  /* The first frame's luma. */
  double sum = 0;
  for (long i = 0; i < width * height; ++i) {
    const long at = i * f->bytes_per_pixel;
    const double d = luma(f, a + at) - luma(f, b + at);
    sum += d * d;
  }
  const double mse = sum / (width * height);
  const double psnr = mse == 0 ? INFINITY : 10 * log10(255.0 * 255.0 / mse);
  printf("%s: luma PSNR %.2f dB\n", argv[1], psnr);
  return psnr >= atof(argv[6]) ? 0 : 1;
}
