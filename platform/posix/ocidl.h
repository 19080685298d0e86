// Empty: the generated interface header includes this name; com_types.h has what it declares.
