// Bounds that no kernel holds, so that a test sees the harness refuse them.
TARN_CLAIM(dExp, LA, 1.0, -700, 700)
TARN_CLAIM(dExp, HA, 0.5, -700, 700)
TARN_CLAIM(dExp, EP, 1e6, -700, 700)
