// Write -> read -> compare over every example configuration file (filled in next).
