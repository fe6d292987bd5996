// Test support: an environment with the driver loaded, temporary volumes and
// a pool-balance check at the end of every test.
#pragma once
