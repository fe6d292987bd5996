#include "support/driver_fixture.h"
