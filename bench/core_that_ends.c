/* Stands in for the core application, so that nothing stays running. */

int main(void) { return 0; }
