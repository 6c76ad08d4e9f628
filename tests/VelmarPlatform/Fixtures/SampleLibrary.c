/* A library small enough to be loaded by a test. */
int velmarSampleAnswer(void) { return 42; }
