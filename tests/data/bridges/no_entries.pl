# Loads, but its package defines no entry.
package Qiro_plugin;

1;
