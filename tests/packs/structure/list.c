#ifndef LIST_H
#define LIST_H
#define LIST_GROWTH 2
#define LIST_EACH(item, list) \
  for (struct item* item = (list)->first; item; item = item->next)

typedef struct list list;
typedef int (*compare)(const void* left, const void* right);
typedef unsigned long size;
typedef struct {
  int x, y;
} point;
typedef enum { red, green = 2 } color;

struct list {
  struct item* first;
  char name[16];
  int (*compare)(const void*, const void*);
  union {
    int a;
    float b;
  } value;
};

extern int list_count;
static const char* const names[] = {
  "one",
  "two",
};

int list_add(list* self, const struct item* item, int flags[2]);
char** list_names(void);

static int *sorted(compare by) {
  // XXX slow
  int done = 0;
  do {
    if (done)
      return 0;
    else {
      done = 1;
      done++;
    }
  } while (!done);
  return 0;
}
#endif
