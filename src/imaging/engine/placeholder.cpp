// replaced by the engine sources
