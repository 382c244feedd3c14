#ifndef SAMPLE_H
#define SAMPLE_H
/** Opens it. */
API int sample_open(const char *path, int flags);
char *sample_name(void);
extern int sample_count;
struct opaque;
#endif
