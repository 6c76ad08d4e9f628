/* A grammar in a shared library of its own: the tables of JSON, exported as tree_sitter_garden. */
#define tree_sitter_json tree_sitter_garden
#include "parser.c"
