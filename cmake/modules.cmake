# What each folder links: the one-way dependency rule, written down once.
# platform <- settings <- ticket <- {tpif, device, paperlib, marking} <- toolkit <- panels
#   <- plugin <- host
set(TALMO_settings_LIBS talmo_platform)
set(TALMO_ticket_LIBS talmo_settings)
set(TALMO_tpif_LIBS talmo_ticket talmo_device)
set(TALMO_device_LIBS talmo_ticket Cups::Cups)
set(TALMO_paperlib_LIBS talmo_ticket Cups::Cups)
set(TALMO_marking_LIBS talmo_ticket PkgConfig::TALMO_MARKING_DEPS)
set(TALMO_toolkit_LIBS talmo_tpif talmo_device talmo_paperlib talmo_marking Qt6::Widgets Qt6::UiTools)
set(TALMO_panels_LIBS talmo_toolkit)
set(TALMO_plugin_LIBS talmo_panels)
