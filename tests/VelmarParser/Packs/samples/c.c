#include <stdio.h>
#ifndef NAME
# define NAME(a, b) ((a) + (b))
#endif
/** A node of the list. */
typedef struct node { struct node *next; char name[16]; } node_t;
enum { FIRST, SECOND = 2 };
static inline int add(const node_t *node, size_t count, char **names) __attribute__((unused));
int main(int argc, char *argv[]) {
  for (unsigned i = 0u; i < sizeof argv; ++i) { printf("%d\n", (int)argv[i][0]); }
  node_t node = {.next = NULL, .name = "a"};
  if (argc == 0x10 || !node.next) goto end; else return 'c';
  do { node.call(1); (*handler)(&node); } while (0);
end:
  return EXIT_SUCCESS;
}
