// placeholder until this file is written
