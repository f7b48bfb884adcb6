// A library that can't be bound whole: nobody defines what its function calls.

extern "C" {

int NobodyDefinesThis();
int CallNobody();
int CallNobody() { return NobodyDefinesThis(); }
}
