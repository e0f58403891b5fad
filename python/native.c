/* Makes Python's records from the library's structures, as `tarnel/_reading.py` does without this, many times faster.
 * The values go straight into the slots of the records: no constructor runs for them. */
#define PY_SSIZE_T_CLEAN
#include <Python.h>
#include <stdbool.h>
#include <structmember.h>

typedef struct Plan Plan;

typedef struct {
    const Plan *nested; /* Of a record, or of those in a list. */
    Py_ssize_t slot;    /* Where the record has its value. */
    Py_ssize_t offset;  /* Where the structure has its member. */
    char form;          /* 'v'alue, 'p'ointer or 'l'ist. */
    char kind;          /* As `struct` names it; 't'ext or 'r'ecord. */
} Field;

struct Plan {
    PyTypeObject *type;
    Py_ssize_t size;
    Py_ssize_t count;
    bool isFlat; /* It has numbers and texts alone. */
    Field fields[];
};

static PyObject *recordFrom(const Plan *plan, const char *structure);

static PyObject *textFrom(const Py_UCS2 *units)
{
    Py_ssize_t length = 0;
    bool hasSurrogates = false;
    for (; units[length] != 0; ++length)
        hasSurrogates |= (units[length] & 0xF800) == 0xD800;
    if (!hasSurrogates)
        return PyUnicode_FromKindAndData(PyUnicode_2BYTE_KIND, units, length);
    int order = PY_LITTLE_ENDIAN ? -1 : 1;
    return PyUnicode_DecodeUTF16((const char *)units, 2 * length, "surrogatepass", &order);
}

static PyObject *valueFrom(const Field *field, const void *value)
{
    switch (field->kind) {
    case 't':
        return textFrom(value);
    case 'r':
        return recordFrom(field->nested, value);
    case '?':
        return PyBool_FromLong(*(const bool *)value);
    case 'B':
        return PyLong_FromLong(*(const unsigned char *)value);
    case 'i':
        return PyLong_FromLong(*(const int *)value);
    case 'I':
        return PyLong_FromUnsignedLong(*(const unsigned int *)value);
    case 'Q':
        return PyLong_FromUnsignedLongLong(*(const unsigned long long *)value);
    case 'd':
        return PyFloat_FromDouble(*(const double *)value);
    default:
        return PyErr_Format(PyExc_SystemError, "no value is of the kind '%c'", field->kind);
    }
}

static PyObject *listFrom(const Field *field, const char *items, Py_ssize_t count)
{
    const Py_ssize_t size = field->nested != NULL ? field->nested->size : (Py_ssize_t)sizeof(unsigned int);
    PyObject *list = PyList_New(count);
    for (Py_ssize_t i = 0; list != NULL && i < count; ++i) {
        PyObject *item = valueFrom(field, items + i * size);
        if (item == NULL)
            Py_CLEAR(list);
        else
            PyList_SET_ITEM(list, i, item);
    }
    return list;
}

static PyObject *memberFrom(const Field *field, const char *member)
{
    if (field->form == 'v')
        return valueFrom(field, member);
    const void *pointer = *(const void *const *)member;
    if (field->form == 'l')
        return listFrom(field, pointer, *(const unsigned int *)(member + sizeof pointer));
    return pointer != NULL ? valueFrom(field, pointer) : Py_NewRef(Py_None);
}

static PyObject *recordFrom(const Plan *plan, const char *structure)
{
    PyObject *record = plan->type->tp_alloc(plan->type, 0);
    for (const Field *field = plan->fields; record != NULL && field != plan->fields + plan->count; ++field) {
        PyObject *value = memberFrom(field, structure + field->offset);
        if (value == NULL)
            Py_CLEAR(record);
        else
            *(PyObject **)((char *)record + field->slot) = value;
    }
    /* As with tuples of such values: what can be part of no cycle need not be looked at in the search for them, which
     * takes as long as all the rest for 50,000 events. */
    if (record != NULL && plan->isFlat)
        PyObject_GC_UnTrack(record);
    return record;
}

/* Where the instances of a class have a slot; -1 with an exception if it is none. */
static Py_ssize_t slotOf(PyObject *type, const char *name)
{
    PyObject *slot = PyObject_GetAttrString(type, name);
    if (slot == NULL)
        return -1;
    Py_ssize_t offset = -1;
    if (Py_IS_TYPE(slot, &PyMemberDescr_Type))
        offset = ((PyMemberDescrObject *)slot)->d_member->offset;
    else
        PyErr_Format(PyExc_TypeError, "'%s' is no slot", name);
    Py_DECREF(slot);
    return offset;
}

/* plan(class, size, [(name, offset, form, kind, nested plan or None), ...]): there is one for each class, for good. */
static PyObject *makePlan(PyObject *module, PyObject *arguments)
{
    PyObject *type, *list;
    Py_ssize_t size;
    if (!PyArg_ParseTuple(arguments, "O!nO!", &PyType_Type, &type, &size, &PyList_Type, &list))
        return NULL;
    (void)module;
    const Py_ssize_t count = PyList_GET_SIZE(list);
    Plan *plan = PyMem_Malloc(sizeof *plan + (size_t)count * sizeof *plan->fields);
    if (plan == NULL)
        return PyErr_NoMemory();
    *plan = (Plan){.type = (PyTypeObject *)type, .size = size, .count = count, .isFlat = true};
    for (Py_ssize_t i = 0; i < count; ++i) {
        const char *name;
        int form, kind;
        PyObject *nested;
        Field field = {0};
        if (!PyArg_ParseTuple(PyList_GET_ITEM(list, i), "snCCO", &name, &field.offset, &form, &kind, &nested) ||
            (field.slot = slotOf(type, name)) < 0 ||
            (nested != Py_None && (field.nested = PyCapsule_GetPointer(nested, NULL)) == NULL)) {
            PyMem_Free(plan);
            return NULL;
        }
        field.form = (char)form;
        field.kind = (char)kind;
        plan->fields[i] = field;
        plan->isFlat &= field.nested == NULL && field.form != 'l';
    }
    Py_INCREF(type);
    return PyCapsule_New(plan, NULL, NULL);
}

/* read(plan, address, count): the records of a block. */
static PyObject *readBlock(PyObject *module, PyObject *arguments)
{
    PyObject *capsule;
    unsigned long long address;
    Py_ssize_t count;
    if (!PyArg_ParseTuple(arguments, "OKn", &capsule, &address, &count))
        return NULL;
    (void)module;
    const Field all = {.kind = 'r', .nested = PyCapsule_GetPointer(capsule, NULL)};
    if (all.nested == NULL)
        return NULL;
    /* All of it is here to stay: looking for garbage in it time and again takes longer than making it. */
    const int wasEnabled = PyGC_Disable();
    PyObject *records = listFrom(&all, (const char *)(uintptr_t)address, count);
    if (wasEnabled)
        PyGC_Enable();
    return records;
}

static PyMethodDef functions[] = {
    {"plan", makePlan, METH_VARARGS, NULL}, {"read", readBlock, METH_VARARGS, NULL}, {NULL, NULL, 0, NULL}};

static struct PyModuleDef definition = {PyModuleDef_HEAD_INIT, "_native", NULL, -1, functions, NULL, NULL, NULL, NULL};

PyMODINIT_FUNC PyInit__native(void)
{
    return PyModule_Create(&definition);
}
