// Marks what the shared library exports; everything else in it is hidden.

#ifndef SGBK_VISIBILITY_H
#define SGBK_VISIBILITY_H

#define SGBK_API __attribute__((visibility("default")))

#endif
