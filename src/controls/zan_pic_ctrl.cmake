target_sources(partkeep_controls PRIVATE "${CMAKE_CURRENT_LIST_DIR}/zan_pic_ctrl.cpp")
