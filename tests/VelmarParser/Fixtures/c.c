#include <stdio.h>
#include <stdlib.h>

#define LIMIT 16

typedef struct stack {
    int values[LIMIT];
    size_t count;
} stack_t;

static int push(stack_t *stack, int value) {
    if (stack->count >= LIMIT)
        return -1; /* full */
    stack->values[stack->count++] = value;
    return 0;
}

int main(int argc, char **argv) {
    stack_t stack = {.count = 0};
    for (int i = 1; i < argc; ++i) {
        switch (argv[i][0]) {
        case '+':
            push(&stack, 1);
            break;
        default:
            push(&stack, atoi(argv[i]));
        }
    }
    printf("%zu \"values\", %d\n", stack.count, stack.count ? stack.values[0] : 0);
    return EXIT_SUCCESS;
}
