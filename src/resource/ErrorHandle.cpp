#include "resource/ErrorHandle.h"

template class ErrorHandle<unsigned, VELK_TASK_INIT_PARAM>;
